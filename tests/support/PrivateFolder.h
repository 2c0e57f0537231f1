#pragma once

#include <filesystem>

namespace support {

/// A new, empty folder under $TMPDIR (or /tmp) that only this user can enter, removed with all that
/// is in it when the object goes away. Throws std::system_error when it cannot be made.
class PrivateFolder {
  public:
    PrivateFolder();
    ~PrivateFolder();
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;

    const std::filesystem::path& path() const noexcept { return path_; }

  private:
    std::filesystem::path path_;
};

} // namespace support
