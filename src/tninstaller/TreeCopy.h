#pragma once

#include "tninstaller/Caller.h"

#include "platform/base/FileDescriptor.h"

#include <cstdint>
#include <string>
#include <vector>

/// Copies a folder that a user may change at any time. It is read with the user's rights; the copy
/// consists of new files and folders of this process's identity, with the modes 0644, 0755 for what
/// may be executed and for folders, and without links, extended attributes and access lists.
class TreeCopy {
  public:
    /// A source that is larger is refused.
    struct Limits {
        std::uint64_t entries = 200'000;
        std::uint64_t bytes = std::uint64_t{4} << 30U;
        std::size_t depth = 64;
    };

    explicit TreeCopy(const Caller& caller) : TreeCopy(caller, Limits()) {}
    TreeCopy(const Caller& caller, const Limits& limits);

    /// `source` is an absolute path of folders, none of them a link; the copy is made as `name` in
    /// the folder `target`, where there is none yet. Throws InstallFailure: badSource for a source
    /// that cannot be read or holds anything but files and folders, noRoom or notWritten; what has
    /// been copied then stays.
    void copy(const std::string& source, int target, const std::string& name);

  private:
    platform::FileDescriptor openSource(int folder, const std::string& name) const;
    platform::FileDescriptor openRoot(const std::string& source) const;
    void copyFile(int from, int target, const std::string& name);
    void countEntry(const std::string& name);
    void countBytes(std::uint64_t bytes, const std::string& name);

    const Caller& caller_;
    const Limits limits_;
    std::uint64_t entries_ = 0;
    std::uint64_t bytes_ = 0;
    std::vector<char> part_; // of a file, on its way
};
