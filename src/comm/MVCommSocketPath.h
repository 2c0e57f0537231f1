#pragma once

#include <cstddef>
#include <string>
#include <sys/types.h>
#include <vector>

/// The path of the application's main socket, computed in the same way by the application, which
/// creates it, and the plug-in, which looks for it.
///
/// TONVALE_SOCKET_DIR names the folder if it is set. Otherwise it is /var/tmp, where a program
/// finds the socket without any knowledge of the session. If another user has taken the name there,
/// whose socket nobody else can replace, it is $XDG_RUNTIME_DIR.

/// The name of every plug-in socket.
inline constexpr const char* kMVCommSocketName = "com.quarnel.mivo.sock";

/// The maximum length of a path in bytes: a longer one would be truncated, and plug-ins would not
/// find the socket.
inline constexpr std::size_t kMVCommLongestSocketPath = 253;

/// What the choice depends on; by default from the process's environment.
struct MVCommSocketPlaces {
    std::string overridingFolder; ///< TONVALE_SOCKET_DIR, or empty
    std::string sharedFolder;     ///< /var/tmp
    std::string runtimeFolder;    ///< XDG_RUNTIME_DIR, or empty
    uid_t user;                   ///< the effective user
};

MVCommSocketPlaces MVCommCurrentSocketPlaces();

/// The path at which the application serves.
std::string MVCommMainSocketPath(const MVCommSocketPlaces& places = MVCommCurrentSocketPlaces());

/// The paths that a plug-in tries, the most likely first. There are several because the application
/// may have been started while another user held the shared name.
std::vector<std::string>
MVCommCandidateSocketPaths(const MVCommSocketPlaces& places = MVCommCurrentSocketPlaces());
