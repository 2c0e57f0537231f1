#include "plugin/effects/AudioServerProcess.h"

#include "platform/loop/UnixSocket.h"
#include "platform/processes/ProcessInfo.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string_view>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

constexpr std::string_view daemonName = "pipewire";
constexpr const char* defaultRemote = "pipewire-0";
constexpr const char* systemFolder = "/run/pipewire"; // of a server for the whole machine

std::string variable(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

bool isDaemon(pid_t process) {
    const auto path = platform::executablePath(process);
    if (path)
        return fs::path(*path).filename() == daemonName;
    // A daemon with capabilities of its own hides its executable.
    return platform::commandName(process) == daemonName;
}

/// However the folder is called.
bool isSamePlace(const fs::path& a, const fs::path& b) {
    std::error_code error;
    return a == b || (a.filename() == b.filename() &&
                      fs::equivalent(a.parent_path(), b.parent_path(), error));
}

/// The inode of a listening socket in a line of the kernel's table of Unix sockets, as text, if the
/// socket is at `path`.
std::string listenerIn(const std::string& line, const fs::path& path) {
    constexpr unsigned listening = 0x10000;
    std::istringstream fields(line);
    std::string skipped;
    std::string flags;
    std::string inode;
    std::string name;
    fields >> skipped >> skipped >> skipped >> flags >> skipped >> skipped >> inode >> std::ws;
    std::getline(fields, name);
    unsigned bits = 0;
    std::from_chars(flags.data(), flags.data() + flags.size(), bits, 16);
    const bool found = (bits & listening) != 0 && !name.empty() && isSamePlace(name, path);
    return found ? inode : "";
}

/// How the links in /proc/PID/fd name the sockets that listen at `path`.
std::vector<std::string> listenersAt(const fs::path& path) {
    std::vector<std::string> links;
    std::ifstream table("/proc/net/unix");
    for (std::string line; std::getline(table, line);) {
        const std::string inode = listenerIn(line, path);
        if (!inode.empty())
            links.push_back("socket:[" + inode + "]");
    }
    return links;
}

bool holdsAny(pid_t process, const std::vector<std::string>& links) {
    std::error_code error;
    const fs::path folder = fs::path("/proc") / std::to_string(process) / "fd";
    for (fs::directory_iterator each(folder, error); !error && each != fs::directory_iterator();
         each.increment(error)) {
        std::error_code gone;
        const std::string target = fs::read_symlink(each->path(), gone);
        if (std::find(links.begin(), links.end(), target) != links.end())
            return true;
    }
    return false;
}

std::optional<pid_t> daemonHolding(const std::vector<std::string>& links) {
    if (links.empty())
        return std::nullopt;
    std::error_code error;
    for (fs::directory_iterator each("/proc", error); !error && each != fs::directory_iterator();
         each.increment(error)) {
        const std::string name = each->path().filename();
        pid_t process = 0;
        const auto [end, failure] =
            std::from_chars(name.data(), name.data() + name.size(), process);
        if (failure == std::errc{} && end == name.data() + name.size() &&
            platform::processUser(process) == ::geteuid() && isDaemon(process) &&
            holdsAny(process, links))
            return process;
    }
    return std::nullopt;
}

} // namespace

std::vector<fs::path> audioServerSockets() {
    std::string remote = variable("PIPEWIRE_REMOTE");
    if (remote.empty())
        remote = defaultRemote;
    if (remote.starts_with('/'))
        return {remote};
    std::vector<fs::path> sockets;
    for (const char* const name : {"PIPEWIRE_RUNTIME_DIR", "XDG_RUNTIME_DIR"}) {
        const fs::path folder = variable(name);
        if (folder.empty())
            continue;
        sockets.push_back(folder / remote);
        break; // the second counts without the first only
    }
    sockets.push_back(fs::path(systemFolder) / remote);
    return sockets;
}

std::optional<AudioServerProcess> findAudioServer(const std::vector<fs::path>& sockets) {
    for (const fs::path& path : sockets) {
        const platform::FileDescriptor socket = platform::connectUnixSocket(path);
        if (!socket)
            continue;
        std::optional<pid_t> process = platform::peerProcess(socket.get());
        if (!process || !isDaemon(*process))
            process = daemonHolding(listenersAt(path));
        if (!process)
            return std::nullopt;
        return AudioServerProcess{*process, platform::executablePath(*process).value_or("")};
    }
    return std::nullopt;
}
