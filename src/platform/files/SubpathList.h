#pragma once

#include "platform/base/FileDescriptor.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace platform {

/// The paths of everything below a folder, relative to it and sorted by their bytes. For comparing
/// and copying trees. Folders behind links are not entered. Immutable; any thread.
class SubpathList {
  public:
    /// Nothing if the path is no folder, or if it or any folder below cannot be read.
    [[nodiscard]] static std::optional<SubpathList> of(const std::string& folder);

    /// The folder itself, open.
    [[nodiscard]] int root() const noexcept { return root_.get(); }

    [[nodiscard]] std::size_t size() const noexcept { return entries_.size(); }
    [[nodiscard]] const char* path(std::size_t index) const noexcept {
        return entries_[index].path.c_str();
    }

    /// Whether it is a folder, or a link to one.
    [[nodiscard]] bool isFolder(std::size_t index) const noexcept {
        return entries_[index].isFolder;
    }

  private:
    struct Entry {
        std::string path;
        bool isFolder;
    };

    explicit SubpathList(FileDescriptor root) : root_(std::move(root)) {}
    bool read(std::vector<std::string>& folders);
    void add(std::string path, unsigned char type, std::vector<std::string>& folders);

    FileDescriptor root_;
    std::vector<Entry> entries_;
};

} // namespace platform
