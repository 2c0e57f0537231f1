#pragma once

#include "tninstaller/InstallFailure.h"

#include "platform/base/FileDescriptor.h"

#include <dirent.h>
#include <memory>
#include <string>

/// The names in an open folder, without "." and "..".
class DirectoryReader {
  public:
    /// `path` is for messages. Throws InstallFailure with `code`.
    DirectoryReader(platform::FileDescriptor folder, const std::string& path, InstallCode code);

    [[nodiscard]] int descriptor() const noexcept { return ::dirfd(stream_.get()); }

    /// Valid until the next call; null at the end. Throws InstallFailure for a folder that cannot
    /// be read to its end.
    const char* next();

    void rewind() noexcept { ::rewinddir(stream_.get()); }

  private:
    struct Close {
        void operator()(DIR* stream) const noexcept { ::closedir(stream); }
    };
    std::unique_ptr<DIR, Close> stream_;
    std::string path_;
    InstallCode code_;
};
