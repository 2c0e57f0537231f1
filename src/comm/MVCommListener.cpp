#include "comm/MVCommListener.h"

#include "platform/base/HarmlessText.h"
#include "platform/base/SystemLog.h"
#include "platform/loop/DispatchQueue.h"
#include "platform/loop/RunLoop.h"
#include "platform/loop/UnixSocket.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

using platform::LogPriority;
using platform::systemLog;

namespace {

constexpr int listenBacklog = 5;

// Gives other programs time to remove the whole folder, or to serve the path.
constexpr std::chrono::milliseconds settling{300};

// Time until the next check if no file event triggers one: after a failure, and while another
// program has the path, since its file stays if it is killed.
constexpr std::chrono::seconds nextLook{5};

using StatCall = int (*)(const char*, struct stat*);

std::optional<std::pair<dev_t, ino_t>> numberOf(const std::string& path, StatCall call) noexcept {
    struct stat status {};
    if (call(path.c_str(), &status) != 0)
        return std::nullopt;
    return std::pair(status.st_dev, status.st_ino);
}

/// Whether a program listens there; a socket that we may not connect to counts as one.
bool isServed(const std::string& path) {
    if (platform::connectUnixSocket(path))
        return true;
    return errno == EAGAIN || errno == EACCES || errno == EPERM || errno == EPROTOTYPE;
}

} // namespace

std::unique_ptr<MVCommListener> MVCommListener::open(std::string path, Handlers handlers) {
    std::unique_ptr<MVCommListener> listener(
        new MVCommListener(std::move(path), std::move(handlers)));
    if (!listener->serve())
        return nullptr;
    listener->servedFolder_ = numberOf(listener->folder_, &::stat);
    listener->watch_.follow({listener->path_});
    if (!listener->isOurs())
        listener->settled_.start(settling);
    return listener;
}

MVCommListener::MVCommListener(std::string path, Handlers handlers)
    : path_(std::move(path))
    , folder_(std::filesystem::path(path_).parent_path())
    , handlers_(std::move(handlers))
    , loop_(*platform::RunLoop::current())
    , settled_(loop_, [this] { look(); })
    , watch_(platform::DispatchQueue::main(), [this] { settled_.start(settling); }) {}

MVCommListener::~MVCommListener() {
    removeFile();
}

void MVCommListener::resume() {
    baseSock_->resume();
}

bool MVCommListener::isFolderReplaced() const {
    return numberOf(folder_, &::stat) != servedFolder_;
}

void MVCommListener::stopRecreating() {
    settled_.stop();
    watch_.follow({});
}

/// What there was is given up when its successor works.
bool MVCommListener::serve() {
    platform::FileDescriptor descriptor = platform::makeUnixSocket();
    if (!descriptor) {
        logError("Couldn't create socket: %s (%d)", errno);
        return false;
    }
    if (!bindTo(descriptor.get()))
        return false;
    if (listenOn(std::move(descriptor)))
        return true;
    removeFile();
    return false;
}

bool MVCommListener::bindTo(int descriptor) {
    if (numberOf(path_, &::lstat) && ::unlink(path_.c_str()) != 0)
        logError("Couldn't unlink(): %s (%d)", errno);
    if (!platform::bindUnixSocketForAll(descriptor, path_)) {
        logError("Couldn't bind(): %s (%d)", errno);
        return false;
    }
    file_ = numberOf(path_, &::lstat);
    return true;
}

bool MVCommListener::listenOn(platform::FileDescriptor descriptor) {
    if (::listen(descriptor.get(), listenBacklog) != 0) {
        logError("Couldn't listen(): %s (%d)", errno);
        return false;
    }
    auto socket = platform::AcceptSocket::create(std::move(descriptor), handlers_.accepted);
    if (socket == nullptr) {
        systemLog(LogPriority::error, "Couldn't create CFSocket!");
        return false;
    }
    if (!socket->schedule(loop_)) {
        systemLog(LogPriority::error, "Couldn't create CFRunLoopSource");
        return false;
    }
    baseSock_ = std::move(socket);
    return true;
}

/// The inode numbers of our file and its folder are not reused as long as our socket is open.
bool MVCommListener::isOurs() const {
    return file_ && numberOf(path_, &::lstat) == file_;
}

void MVCommListener::removeFile() {
    if (isOurs())
        ::unlink(path_.c_str());
    file_.reset();
}

void MVCommListener::look() {
    watch_.follow({path_}); // first, so that every later change triggers another check
    const auto there = numberOf(path_, &::lstat);
    if (there && there == file_)
        return;
    if (there && isServed(path_))
        leaveToAnother(*there);
    else
        recreateSocket();
}

void MVCommListener::leaveToAnother(const FileNumber& file) {
    if (!std::exchange(another_, file))
        systemLog(LogPriority::error,
                  "Another program listens on %s; plug-ins can't connect to Tonvale there",
                  platform::printableText(path_).c_str());
    settled_.start(nextLook);
}

void MVCommListener::recreateSocket() {
    if (!serve()) {
        isFailureTold_ = true;
        settled_.start(nextLook);
        return;
    }
    isFailureTold_ = false;
    another_.reset();
    if (recreatedLimit_.allowsLine())
        systemLog(LogPriority::warning, "Recreated %s, which had been removed",
                  platform::printableText(path_).c_str());
    handlers_.socketRecreated();
}

void MVCommListener::logError(const char* format, int error) const {
    if (isFailureTold_)
        return;
        // The texts are constants of this file.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    systemLog(LogPriority::error, format, std::strerror(error), error);
#pragma GCC diagnostic pop
}
