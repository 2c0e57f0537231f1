#pragma once

#include <string>
#include <sys/types.h>

namespace platform {

/// The standard directories of programs. A returned folder need not exist; an XDG base directory
/// variable that is not an absolute path counts as unset. Any thread, as long as none changes the
/// environment.

enum class Domain { user, local };

/// $HOME, else the home in the user's entry. Empty for a user without a home.
std::string homeDirectory();

/// The folder under which programs keep their data: of this user ($XDG_DATA_HOME, else
/// ~/.local/share), or for all users ("Application Support" in the local library). Empty if the
/// system has none.
std::string applicationSupportDirectory(Domain domain);

/// $XDG_STATE_HOME, else ~/.local/state. Empty for a user without a home.
std::string logsDirectory();

/// $XDG_CONFIG_HOME, else ~/.config. Empty for a user without a home.
std::string preferencesDirectory();

/// ~/Library, which holds the containers of this user's programs. Empty for a user without a home.
std::string userLibraryDirectory();

/// The folder shared by all users: $TONVALE_LOCAL_LIBRARY, else what the build has set, /Library if
/// nothing else.
std::string localLibraryDirectory();

/// What the build has set, whatever the environment says: for a program that has more rights than
/// its caller.
std::string builtInLocalLibraryDirectory();

/// The folder of copied applications: ~/Applications, or that of all users,
/// $TONVALE_LOCAL_APPLICATIONS, else what the build has set, /opt if nothing else. Empty for a user
/// without a home.
std::string applicationsDirectory(Domain domain);

/// What the build has set for all users, whatever the environment says.
std::string builtInLocalApplicationsDirectory();

/// $XDG_RUNTIME_DIR, this login session's private folder for sockets; empty if there is none.
std::string runtimeDirectory();

/// $TMPDIR, else /tmp.
std::string temporaryDirectory();

/// The folder for temporary files that survives a restart and that all users share.
std::string sharedTemporaryDirectory();

/// Creates the folder and its missing parents. New folders get `mode` whatever the umask (it should
/// allow their owner to write and enter, or nothing can be created inside); existing ones are not
/// changed. False with errno set on failure; folders created so far stay.
[[nodiscard]] bool makeDirectories(const std::string& path, mode_t mode);

} // namespace platform
