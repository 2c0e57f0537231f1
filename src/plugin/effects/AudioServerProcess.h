#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

/// The process of the sound server.
struct AudioServerProcess {
    pid_t pid;
    std::string path; ///< of its executable; empty when the kernel hides it
};

/// Where a client of PipeWire finds its server's socket, most likely first, according to
/// $PIPEWIRE_REMOTE, $PIPEWIRE_RUNTIME_DIR and $XDG_RUNTIME_DIR. Any thread.
std::vector<std::filesystem::path> audioServerSockets();

/// The PipeWire daemon that serves the first of `sockets` that somebody serves. The kernel names
/// whoever began to listen there; when that is a service manager, which hands its sockets over, the
/// daemon is the process of our user that holds the same socket. Connects for a moment.
///
/// Nothing when there is none to be seen: it runs on another machine, in another pid namespace, or
/// as another user. Any thread.
std::optional<AudioServerProcess>
findAudioServer(const std::vector<std::filesystem::path>& sockets = audioServerSockets());
