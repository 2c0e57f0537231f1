#include "platform/loop/ReadBuffer.h"
#include "platform/loop/RunLoop.h"
#include "platform/loop/RunLoopSource.h"
#include "platform/loop/Socket.h"

#include <algorithm>
#include <cerrno>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <utility>

namespace platform {

namespace {

/// Appends what `descriptor` still has queued behind a full buffer, up to the end of the last whole
/// write of the peer: the kernel counts whole writes.
void appendRest(int descriptor, std::vector<std::byte>& bytes) {
    int queued = 0;
    if (::ioctl(descriptor, FIONREAD, &queued) != 0 || queued <= 0)
        return;
    const std::size_t had = bytes.size();
    bytes.resize(had + static_cast<std::size_t>(queued));
    const ssize_t got = ::recv(descriptor, bytes.data() + had, bytes.size() - had, MSG_DONTWAIT);
    bytes.resize(had + (got > 0 ? static_cast<std::size_t>(got) : 0));
}

bool hasMore(int descriptor) noexcept {
    std::byte next{};
    return ::recv(descriptor, &next, sizeof next, MSG_PEEK | MSG_DONTWAIT) > 0;
}

} // namespace

std::shared_ptr<DataSocket> DataSocket::create(FileDescriptor connected, Handler handler) {
    struct Shared : DataSocket {
        Shared(FileDescriptor&& descriptor, Handler&& handler)
            : DataSocket(std::move(descriptor), std::move(handler)) {}
    };
    return std::make_shared<Shared>(std::move(connected), std::move(handler));
}

DataSocket::DataSocket(FileDescriptor connected, Handler handler)
    : descriptor_(std::move(connected)), handler_(std::move(handler)) {}

std::unique_ptr<RunLoopSource> DataSocket::makeSource(RunLoop& loop, std::size_t mostPerTurn) {
    mostPerTurn_ = mostPerTurn;
    return RunLoopSource::create(loop, descriptor_.get(), RunLoopSource::reading,
                                 [this, &loop] { deliverQueued(loop); });
}

void DataSocket::deliverQueued(RunLoop& loop) {
    const auto self = shared_from_this();
    ReadBuffer buffer(loop);
    std::vector<std::byte>& bytes = buffer.bytes();
    const std::optional<std::size_t> size = readInto(bytes);
    if (!size)
        return;
    if (*size > 0 && std::exchange(isSkipping_, isSkipping_ && isCut_))
        return;
    handler_(*this, {bytes.data(), *size});
}

/// How many of `bytes` are the delivery, 0 at the end of the connection; nothing when nothing has
/// come. The vector may grow.
std::optional<std::size_t> DataSocket::readInto(std::vector<std::byte>& bytes) {
    const std::size_t limit = std::min(bytes.size(), mostPerTurn_);
    const std::size_t had = returned_.size();
    std::ranges::copy(returned_, bytes.begin());
    const ssize_t got = ::recv(descriptor_.get(), bytes.data() + had, limit - had, MSG_DONTWAIT);
    if (got < 0 && (errno == EAGAIN || errno == EINTR))
        return {};
    returned_.clear();
    isCut_ = false;
    if (got <= 0)
        return 0; // a broken connection is an ended one
    const std::size_t size = had + static_cast<std::size_t>(got);
    if (size < limit)
        return size;
    if (mostPerTurn_ == everything) {
        appendRest(descriptor_.get(), bytes);
        return bytes.size();
    }
    isCut_ = hasMore(descriptor_.get());
    return size;
}

void DataSocket::putBack(std::span<const std::byte> bytes) {
    returned_.assign(bytes.begin(), bytes.end());
}

bool DataSocket::send(std::span<const std::byte> bytes) const noexcept {
    ssize_t sent = 0;
    do {
        sent = ::send(descriptor_.get(), bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    if (sent >= 0 && static_cast<std::size_t>(sent) != bytes.size())
        errno = EAGAIN;
    return sent >= 0 && static_cast<std::size_t>(sent) == bytes.size();
}

void DataSocket::invalidate() noexcept {
    ::shutdown(descriptor_.get(), SHUT_RDWR);
}

} // namespace platform
