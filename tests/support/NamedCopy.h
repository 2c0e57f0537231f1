#pragma once

#include "support/PrivateFolder.h"

#include <filesystem>
#include <string>

namespace support {

/// A copy of a program under another file name, in a folder of its own: to everybody another
/// program.
class NamedCopy {
  public:
    NamedCopy(const std::filesystem::path& program, const std::string& name)
        : path_(folder_.path() / name) {
        std::filesystem::copy_file(program, path_);
    }

    std::string path() const { return path_; }
    std::string name() const { return path_.filename(); }

  private:
    const PrivateFolder folder_;
    const std::filesystem::path path_;
};

} // namespace support
