#include "platform/base/DescriptorLimit.h"
#include "platform/base/SystemLog.h"
#include "platform/loop/RunLoop.h"
#include "platform/loop/RunLoopSource.h"
#include "platform/loop/Socket.h"
#include "platform/loop/Timer.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <utility>

namespace platform {

namespace {

constexpr std::chrono::seconds restingTime{1};

// As many as wait behind a short backlog. To ask for one more than there are costs as much as a
// connection: the kernel makes the socket first.
constexpr int acceptedPerTurn = 6;

bool isListening(int descriptor) noexcept {
    int listening = 0;
    socklen_t size = sizeof listening;
    if (::getsockopt(descriptor, SOL_SOCKET, SO_ACCEPTCONN, &listening, &size) != 0)
        return false;
    if (listening == 0)
        errno = EINVAL;
    return listening != 0;
}

/// Whether a connection would get a descriptor that the process needs itself. It gets the lowest
/// free one, as the copy does.
bool isTableFull(int descriptor, int firstReserved) noexcept {
    const FileDescriptor lowestFree(::fcntl(descriptor, F_DUPFD_CLOEXEC, 0));
    return !lowestFree || lowestFree.get() >= firstReserved;
}

bool makeNonBlocking(int descriptor) noexcept {
    const int flags = ::fcntl(descriptor, F_GETFL);
    return flags >= 0 && ::fcntl(descriptor, F_SETFL, flags | O_NONBLOCK) == 0;
}

} // namespace

std::unique_ptr<AcceptSocket> AcceptSocket::create(FileDescriptor listening, Handler handler) {
    if (!isListening(listening.get()) || !makeNonBlocking(listening.get()))
        return nullptr;
    return std::unique_ptr<AcceptSocket>(
        new AcceptSocket(std::move(listening), std::move(handler)));
}

AcceptSocket::AcceptSocket(FileDescriptor listening, Handler handler)
    : descriptor_(std::move(listening)), handler_(std::move(handler)) {}

AcceptSocket::~AcceptSocket() = default;

bool AcceptSocket::schedule(RunLoop& loop) {
    resumption_ = std::make_unique<Timer>(loop, [this] { restEnds(); });
    source_ = RunLoopSource::create(loop, descriptor_.get(), RunLoopSource::reading,
                                    [this] { acceptWaiting(); });
    return source_ != nullptr;
}

void AcceptSocket::acceptWaiting() {
    const int firstReserved = firstReservedDescriptor();
    for (int i = 0; i < acceptedPerTurn; ++i) {
        if (isTableFull(descriptor_.get(), firstReserved)) {
            if (i == 0) // else perhaps nobody waits any more
                rest(EMFILE);
            return;
        }
        FileDescriptor connection(
            ::accept4(descriptor_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (!connection) {
            if (errno == EAGAIN)
                restIsLogged_ = false; // nobody waits any more
            else if (errno != EINTR && errno != ECONNABORTED)
                rest(errno);
            return;
        }
        handler_(*this, std::move(connection));
    }
}

void AcceptSocket::rest(int error) {
    if (!std::exchange(restIsLogged_, true))
        systemLog(LogPriority::error, "Not accepting connections for now: %s (%d)",
                  std::strerror(error), error);
    source_->setInterest(RunLoopSource::nothing);
    resumption_->start(restingTime);
}

void AcceptSocket::resume() {
    if (resumption_ == nullptr || !resumption_->isActive())
        return;
    resumption_->stop();
    restEnds();
}

void AcceptSocket::restEnds() noexcept {
    source_->setInterest(RunLoopSource::reading);
}

} // namespace platform
