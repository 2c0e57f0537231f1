#pragma once

#include "platform/base/FileDescriptor.h"
#include "platform/files/SharedFolderCalls.h"

#include <string>
#include <string_view>
#include <sys/types.h>

namespace platform {

/// Writes files atomically into a folder that other users may write to as well. Links of other
/// users are not followed: neither in the folder's path, whose links must be ours or the system's,
/// nor in the folder. Files survive a crash of the program, but not one of the machine.
///
/// Does not notice if the folder is renamed. One thread at a time.
class SharedFolder {
  public:
    /// Error numbers; 0 for success.
    struct Outcome {
        int removing = 0; ///< an existing entry of that name cannot be removed; it stays
        int writing = 0;  ///< the file was not written; an existing one stays
        int mode = 0;     ///< the file was written, with another mode
    };

    /// `path` is absolute; `calls` must outlive the object. If the folder cannot be opened, put()
    /// fails to write, with the same error.
    explicit SharedFolder(const std::string& path,
                          SharedFolderCalls& calls = SharedFolderCalls::system());

    /// Writes a file. Replaces a link or an empty folder of that name, but no other folder.
    Outcome put(const std::string& name, std::string_view bytes, mode_t mode);

    /// Hides a file from file managers, by a line in ".hidden". Does nothing in a folder of another
    /// user, or if ".hidden" cannot be written.
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
