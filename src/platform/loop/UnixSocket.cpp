#include "platform/loop/UnixSocket.h"

#include "platform/base/HarmlessText.h"
#include "platform/base/SystemLog.h"
#include "platform/base/ThreadCalls.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <sched.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

namespace platform {

namespace {

using SocketCall = int (*)(int, const sockaddr*, socklen_t);

/// False, with ENAMETOOLONG, when the path does not fit into the kernel's address, and with EINVAL
/// for an empty one, which would be a name outside the file system, open to everybody.
bool callWithAddress(SocketCall call, int socket, const std::string& path) noexcept {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.empty()) {
        errno = EINVAL;
        return false;
    }
    if (path.size() >= sizeof address.sun_path) {
        errno = ENAMETOOLONG;
        return false;
    }
    std::copy(path.begin(), path.end(), std::begin(address.sun_path));
    return call(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

std::string throughDescriptor(const FileDescriptor& descriptor) {
    return "/proc/self/fd/" + std::to_string(descriptor.get());
}

/// The folder's descriptor gives any folder a short path; the name may be too long as well, so the
/// socket is made under a short one and then renamed.
bool bindLongPath(int socket, const std::string& path) noexcept {
    const std::size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    const FileDescriptor directory(::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!directory)
        return false;
    const std::string shortName =
        "." + std::to_string(::getpid()) + "-" + std::to_string(socket) + ".sock";
    if (!callWithAddress(&::bind, socket, throughDescriptor(directory) + "/" + shortName))
        return false;
    if (::renameat2(directory.get(), shortName.c_str(), directory.get(), name.c_str(),
                    RENAME_NOREPLACE) == 0)
        return true;
    const int error = errno == EEXIST ? EADDRINUSE : errno;
    ::unlinkat(directory.get(), shortName.c_str(), 0);
    errno = error;
    return false;
}

void logNarrowMode(const std::string& path, int error) noexcept {
    systemLog(LogPriority::warning, "Other users may be unable to connect to %s: %s",
              printableText(path).c_str(), std::strerror(error));
}

/// Sets the mode of the socket file that is there, where a sandbox forbids to part with the umask.
/// Never follows a link that was created meanwhile. False, with errno set, on failure.
bool openToAll(const std::string& path) noexcept {
    constexpr mode_t everybody = 0777;
    const FileDescriptor file(::open(path.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    struct stat status {};
    if (!file || ::fstat(file.get(), &status) != 0)
        return false;
    if (!S_ISSOCK(status.st_mode) || status.st_uid != ::geteuid()) {
        errno = EPERM;
        return false;
    }
    std::array<char, 32> handle{};
    std::snprintf(handle.data(), handle.size(), "/proc/self/fd/%d", file.get());
    return ::chmod(handle.data(), everybody) == 0;
}

std::optional<ucred> peerOf(int socket) noexcept {
    ucred peer{};
    socklen_t size = sizeof peer;
    if (::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0)
        return std::nullopt;
    return peer;
}

} // namespace

FileDescriptor makeUnixSocket() noexcept {
    return FileDescriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

bool bindUnixSocket(int socket, const std::string& path) noexcept {
    if (path.size() < sizeof(sockaddr_un::sun_path))
        return callWithAddress(&::bind, socket, path);
    return bindLongPath(socket, path);
}

bool bindUnixSocketForAll(int socket, const std::string& path) noexcept {
    bool isBound = false;
    int error = 0;
    const auto bindWithoutUmask = [&] {
        nameThisThread("bind socket");
        const bool isAlone = ::unshare(CLONE_FS) == 0;
        if (isAlone)
            ::umask(0);
        isBound = bindUnixSocket(socket, path);
        error = errno;
        if (isBound && !isAlone && !openToAll(path))
            logNarrowMode(path, errno);
    };
    try {
        // The umask belongs to the whole process, unless a thread unshares it.
        std::thread(bindWithoutUmask).join();
    } catch (const std::exception&) { // no thread, no memory
        if (!bindUnixSocket(socket, path))
            return false;
        if (!openToAll(path))
            logNarrowMode(path, errno);
        return true;
    }
    errno = error;
    return isBound;
}

FileDescriptor connectUnixSocket(const std::string& path) noexcept {
    FileDescriptor socket = makeUnixSocket();
    if (!socket)
        return {};
    if (path.size() < sizeof(sockaddr_un::sun_path)) {
        if (!callWithAddress(&::connect, socket.get(), path))
            return {};
        return socket;
    }
    const FileDescriptor file(::open(path.c_str(), O_PATH | O_CLOEXEC));
    if (!file || !callWithAddress(&::connect, socket.get(), throughDescriptor(file)))
        return {};
    return socket;
}

bool peerUser(int socket, uid_t& user) noexcept {
    const auto peer = peerOf(socket);
    if (peer)
        user = peer->uid;
    return peer.has_value();
}

std::optional<pid_t> peerProcess(int socket) noexcept {
    const auto peer = peerOf(socket);
    return peer && peer->pid > 0 ? std::optional(peer->pid) : std::nullopt;
}

} // namespace platform
