#pragma once

#include <cstddef>
#include <string>
#include <sys/types.h>
#include <vector>

/// Where the application's main socket lies: the same answer for the application, which makes it,
/// and the plug-in, which looks for it.
///
/// TONVALE_SOCKET_DIR names the folder if it is set. Otherwise that is /var/tmp, where a program
/// finds the socket without knowing anything of the session. If the name is taken there by another
/// user, whose socket nobody else can replace, it is $XDG_RUNTIME_DIR.

/// The name of every plug-in socket.
inline constexpr const char* kMVCommSocketName = "com.quarnel.mivo.sock";

/// What a path may have at most, in bytes, to be served: a longer one would be cut, and serve
/// another place than the one that plug-ins look at.
inline constexpr std::size_t kMVCommLongestSocketPath = 253;

/// What the choice depends on; the functions without it ask the process's environment.
struct MVCommSocketPlaces {
    std::string overridingFolder; ///< TONVALE_SOCKET_DIR, or empty
    std::string sharedFolder;     ///< /var/tmp
    std::string runtimeFolder;    ///< XDG_RUNTIME_DIR, or empty
    uid_t user;                   ///< the effective user
};

MVCommSocketPlaces MVCommCurrentSocketPlaces();

/// The path at which the application serves.
std::string MVCommMainSocketPath(const MVCommSocketPlaces& places = MVCommCurrentSocketPlaces());

/// The paths at which a plug-in looks, the likeliest first. More than one because the application
/// may have been started while another user held the shared name.
std::vector<std::string>
MVCommCandidateSocketPaths(const MVCommSocketPlaces& places = MVCommCurrentSocketPlaces());
