#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

/// The process of the sound server.
struct AudioServerProcess {
    pid_t pid;
    std::string path; ///< of its executable; empty if not accessible
};

/// The paths at which a client of PipeWire looks for its server's socket, most likely first, from
/// $PIPEWIRE_REMOTE, $PIPEWIRE_RUNTIME_DIR and $XDG_RUNTIME_DIR. Any thread.
std::vector<std::filesystem::path> audioServerSockets();

/// The PipeWire daemon that serves the first of `sockets` that is served. The kernel reports the
/// process that began to listen there; if that is a service manager, which passes its sockets on,
/// the daemon is the process of our user that holds the same socket. Connects for a moment.
///
/// Nothing if the daemon is not visible: it runs on another machine, in another pid namespace, or
/// as another user. Any thread.
[[nodiscard]] std::optional<AudioServerProcess>
findAudioServer(const std::vector<std::filesystem::path>& sockets = audioServerSockets());
