#pragma once

#include <string>
#include <sys/types.h>

namespace platform {

/// Where the files of programs lie. A folder that is answered need not exist; a variable of the XDG
/// base directories that is no absolute path counts as unset. Any thread, as long as none changes
/// the environment.

enum class Domain { user, local };

/// The folder under which programs keep their data: of this user ($XDG_DATA_HOME, else
/// ~/.local/share), or for all users ("Application Support" in the local library). Empty when the
/// system names none.
std::string applicationSupportDirectory(Domain domain);

/// $XDG_STATE_HOME, else ~/.local/state. Empty for a user without a home.
std::string logsDirectory();

/// $XDG_CONFIG_HOME, else ~/.config. Empty for a user without a home.
std::string preferencesDirectory();

/// ~/Library, which holds the containers of this user's programs. Empty for a user without a home.
std::string userLibraryDirectory();

/// The folder for what all users share: $TONVALE_LOCAL_LIBRARY, else what the build has set,
/// /Library if nothing else.
std::string localLibraryDirectory();

/// $XDG_RUNTIME_DIR, the folder of this login session for sockets, which only its user can enter;
/// empty when there is none.
std::string runtimeDirectory();

/// The folder for temporary files that survives a restart and that all users share.
std::string sharedTemporaryDirectory();

/// Makes the folder and those above it that are missing. New ones get `mode` whatever the umask
/// (it should let their owner write and enter, or nothing can be made inside), existing ones are
/// left as they are. False with errno set when it cannot be; what has been made stays.
[[nodiscard]] bool makeDirectories(const std::string& path, mode_t mode);

} // namespace platform
