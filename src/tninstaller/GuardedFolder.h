#pragma once

#include "platform/base/FileDescriptor.h"

#include <optional>
#include <string>
#include <vector>

/// A folder that was opened step by step from the root, without following a link: what a path means
/// cannot change between a check and its use.
class GuardedFolder {
  public:
    enum class Trust {
        anybodys, ///< what this process may do is all that counts
        roots,    ///< it and every folder above it belong to root, and nobody else may write there
    };
    /// `path` is absolute and canonical. Nothing if there is no such folder. Throws InstallFailure
    /// for one that cannot be opened, and for one that is not trusted.
    [[nodiscard]] static std::optional<GuardedFolder> find(const std::string& path, Trust trust);

    /// The same; what is missing of the path is made, with the mode 0755.
    [[nodiscard]] static GuardedFolder make(const std::string& path, Trust trust);

    [[nodiscard]] int descriptor() const noexcept { return folder_.get(); }
    [[nodiscard]] const std::string& path() const noexcept { return path_; }

    /// Removes the folder and those above it up to `last`, as long as they are empty.
    static void removeEmpty(const std::string& path, const std::string& last, Trust trust);

  private:
    enum class Missing { leave, make };
    static std::optional<GuardedFolder> walk(const std::string& path, Trust trust, Missing missing);
    GuardedFolder(platform::FileDescriptor folder, std::string path);

    platform::FileDescriptor folder_;
    std::string path_;
};

/// The names between the slashes. Throws InstallFailure for a path that is not absolute, or not
/// canonical: "." and "..".
[[nodiscard]] std::vector<std::string> partsOf(const std::string& path);
