#pragma once

#include "platform/base/FileDescriptor.h"
#include "platform/files/SharedFolderCalls.h"

#include <string>
#include <string_view>
#include <sys/types.h>

namespace platform {

/// A folder in which others may write too, for files that must be whole at any time. Files are
/// replaced under their final name once they are written, and no link is followed that another user
/// has made: neither on the way to the folder, whose links must be ours or the system's, nor in it.
/// What is written outlives a crash of the program, not one of the machine.
///
/// Does not notice when the folder gets another name. One thread at a time.
class SharedFolder {
  public:
    /// What has gone wrong, as error numbers; 0 where nothing has.
    struct Outcome {
        int removing = 0; ///< what has the name cannot be removed; it stays
        int writing = 0;  ///< there is no new file; what had the name stays
        int mode = 0;     ///< the file is there, with another mode
    };

    /// `path` is absolute; `calls` must outlive the object. When the folder cannot be entered,
    /// put() fails to write, with the same error.
    explicit SharedFolder(const std::string& path,
                          SharedFolderCalls& calls = SharedFolderCalls::system());

    /// Writes a file. A link or an empty folder that has its name goes, another folder stays.
    Outcome put(const std::string& name, std::string_view bytes, mode_t mode);

    /// Has file managers not show a file, by a line in ".hidden". Nothing happens in a folder of
    /// another user, or when that cannot be written.
    void hide(const std::string& name);

  private:
    FileDescriptor follow(const std::string& path);
    static bool readLink(int link, std::string& rest);
    int makeRoom(const char* name);
    FileDescriptor createTemporary(std::string& name);
    int write(FileDescriptor file, std::string_view bytes, mode_t mode, int& modeError);

    SharedFolderCalls& calls_;
    FileDescriptor folder_;
    int error_ = 0; // why there is no folder_
};

} // namespace platform
