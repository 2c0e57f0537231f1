#include "BareWireServer.h"

#include "framework/log/qnlog.h"
#include "platform/loop/UnixSocket.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/timerfd.h>
#include <system_error>
#include <unistd.h>

using platform::FileDescriptor;

namespace bench {

namespace {

constexpr std::size_t bufferSize = std::size_t{1} << 20U; // more than a Unix socket queues
constexpr std::size_t eventsPerTurn = 1024;
constexpr std::chrono::milliseconds activityReset{100};
constexpr std::chrono::milliseconds connectionCallbackDelay{50};

FileDescriptor checked(FileDescriptor descriptor, const char* what) {
    if (!descriptor)
        throw std::system_error(errno, std::generic_category(), what);
    return descriptor;
}

FileDescriptor listenAt(const std::string& path) {
    FileDescriptor descriptor = checked(platform::makeUnixSocket(), "socket");
    if (!platform::bindUnixSocket(descriptor.get(), path) ||
        ::listen(descriptor.get(), SOMAXCONN) != 0)
        throw std::system_error(errno, std::generic_category(), path);
    return descriptor;
}

bool watch(const FileDescriptor& epoll, int descriptor, void* context,
           std::uint32_t mode = 0) noexcept {
    epoll_event event{};
    event.events = EPOLLIN | mode;
    event.data.ptr = context;
    return ::epoll_ctl(epoll.get(), EPOLL_CTL_ADD, descriptor, &event) == 0;
}

} // namespace

struct BareWireServer::Connection : Link {
    FileDescriptor descriptor;
    std::size_t place = 0; // in connections_
    Clock::time_point lastActivity;
    std::uint32_t pid = 0;
    bool isCheckedIn = false;
    bool awaitsReset = false;
    char name[sizeof(MVCommCheckinMessage::name) + 1] = {};
    char path[sizeof(MVCommCheckinMessage::path) + 1] = {};
};

BareWireServer::BareWireServer(const std::string& path, const MVCommCallbacks& callbacks,
                               qnlog_handle* log)
    : callbacks_(callbacks)
    , log_(log)
    , path_(path)
    , epoll_(checked(FileDescriptor(::epoll_create1(EPOLL_CLOEXEC)), "epoll_create1"))
    , wakeUp_(checked(FileDescriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)), "eventfd"))
    , timer_(checked(FileDescriptor(::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK)),
                     "timerfd_create"))
    , listening_(listenAt(path))
    , buffer_(std::make_unique<std::byte[]>(bufferSize)) {
    if (!watch(epoll_, listening_.get(), nullptr) || !watch(epoll_, wakeUp_.get(), this) ||
        !watch(epoll_, timer_.get(), &armedFor_))
        throw std::system_error(errno, std::generic_category(), "epoll_ctl");
}

BareWireServer::~BareWireServer() {
    ::unlink(path_.c_str());
}

void BareWireServer::run() {
    while (!isStopped_.load(std::memory_order_relaxed))
        serve(-1);
    eventfd_t value = 0;
    ::eventfd_read(wakeUp_.get(), &value);
    isStopped_ = false;
}

void BareWireServer::stop() noexcept {
    isStopped_ = true;
    ::eventfd_write(wakeUp_.get(), 1);
}

void BareWireServer::serve(int timeout) {
    std::array<epoll_event, eventsPerTurn> events;
    const int ready =
        ::epoll_wait(epoll_.get(), events.data(), static_cast<int>(events.size()), timeout);
    now_ = Clock::now();
    bool isDue = false;
    for (int i = 0; i < ready; ++i) {
        void* const context = events[static_cast<std::size_t>(i)].data.ptr;
        if (context == nullptr)
            accept();
        else if (context == &armedFor_)
            isDue = true; // after what has come
        else if (context != this)
            read(*static_cast<Connection*>(context));
    }
    if (isDue)
        serveTimer();
}

void BareWireServer::serveTimer() {
    std::uint64_t expirations = 0;
    [[maybe_unused]] const ssize_t got = ::read(timer_.get(), &expirations, sizeof expirations);
    armedFor_ = Clock::time_point::max();
    now_ = Clock::now();
    if (callbackDue_ && *callbackDue_ <= now_) {
        callbackDue_.reset();
        callbacks_.connectionCallback()();
    }
    serveResets();
    armTimer();
}

/// What is put off does not touch the timer: it finds nothing due and is armed anew.
void BareWireServer::armTimer() noexcept {
    auto due = callbackDue_.value_or(Clock::time_point::max());
    if (resets_.after != &resets_)
        due = std::min(due,
                       static_cast<const Connection*>(resets_.after)->lastActivity + activityReset);
    if (due >= armedFor_)
        return;
    armedFor_ = due;
    const auto time = due.time_since_epoch();
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
    itimerspec when{};
    when.it_value.tv_sec = seconds.count();
    when.it_value.tv_nsec = (time - seconds).count();
    ::timerfd_settime(timer_.get(), TFD_TIMER_ABSTIME, &when, nullptr);
}

void BareWireServer::accept() {
    for (;;) {
        FileDescriptor descriptor(
            ::accept4(listening_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (!descriptor)
            return;
        uid_t user = 0;
        if (platform::peerUser(descriptor.get(), user) && (user == ::geteuid() || user == 0))
            add(std::move(descriptor));
    }
}

void BareWireServer::add(FileDescriptor descriptor) {
    auto connection = std::make_unique<Connection>();
    // A read takes all that is queued, so the kernel need not look at the connection once more.
    if (!watch(epoll_, descriptor.get(), connection.get(), EPOLLET))
        return;
    connection->descriptor = std::move(descriptor);
    connection->place = connections_.size();
    connections_.push_back(std::move(connection));
}

void BareWireServer::read(Connection& connection) {
    const ssize_t got = ::recv(connection.descriptor.get(), buffer_.get(), bufferSize, 0);
    if (got > 0)
        take(connection, {buffer_.get(), static_cast<std::size_t>(got)});
    else if (got == 0 || (errno != EAGAIN && errno != EINTR))
        disconnect(connection);
}

void BareWireServer::take(Connection& connection, std::span<const std::byte> bytes) {
    const MVCommDataCallback callback = callbacks_.dataCallback();
    const std::byte* next = bytes.data();
    auto left = bytes.size();
    bool isActive = false;
    while (left > 0) {
        std::uint32_t id = 0;
        if (left >= sizeof id)
            std::memcpy(&id, next, sizeof id);
        std::size_t size = 0;
        if (id == kMVCommActivity && left >= sizeof(MVCommActivityMessage)) {
            size = sizeof(MVCommActivityMessage);
            isActive = true;
            // In place: the buffer and all lengths are multiples of the structure's alignment.
            callback(reinterpret_cast<const MVCommActivityMessage*>(next));
        } else if (id == kMVCommCheckin && left >= sizeof(MVCommCheckinMessage)) {
            size = sizeof(MVCommCheckinMessage);
            checkIn(connection, next);
        } else {
            qnlog_msg(log_, qnlog_error, "A message 0x%04x of %zu bytes is not known", id, left);
            break;
        }
        next += size;
        left -= size;
    }
    if (isActive)
        expectReset(connection);
}

void BareWireServer::checkIn(Connection& connection, const std::byte* message) {
    std::memcpy(&connection.pid, message + offsetof(MVCommCheckinMessage, pid),
                sizeof connection.pid);
    std::memcpy(connection.name, message + offsetof(MVCommCheckinMessage, name),
                sizeof(MVCommCheckinMessage::name));
    std::memcpy(connection.path, message + offsetof(MVCommCheckinMessage, path),
                sizeof(MVCommCheckinMessage::path));
    connection.isCheckedIn = true;
    qnlog_msg(log_, qnlog_information, "'%s' connected (pid=%u, path='%s')", connection.name,
              connection.pid, connection.path);
    if (callbacks_.connectionCallback() != nullptr)
        callbackDue_ = now_ + connectionCallbackDelay;
    armTimer();
}

void BareWireServer::disconnect(Connection& connection) {
    connection.descriptor.reset();
    auto& place = connections_[connection.place];
    std::swap(place, connections_.back());
    place->place = connection.place;
    if (connection.awaitsReset)
        closed_.push_back(std::move(connections_.back()));
    connections_.pop_back();
    if (const MVCommCallback callback = callbacks_.disconnectionCallback())
        callback();
}

/// All wait equally long, so the one that was active last is always the last one.
void BareWireServer::expectReset(Connection& connection) noexcept {
    connection.lastActivity = now_;
    connection.awaitsReset = true;
    if (resets_.before == &connection)
        return;
    unlink(connection);
    connection.before = resets_.before;
    connection.after = &resets_;
    connection.before->after = &connection;
    resets_.before = &connection;
    if (armedFor_ == Clock::time_point::max())
        armTimer();
}

void BareWireServer::unlink(Link& link) noexcept {
    link.before->after = link.after;
    link.after->before = link.before;
}

void BareWireServer::serveResets() {
    while (resets_.after != &resets_) {
        Connection& connection = *static_cast<Connection*>(resets_.after);
        if (connection.lastActivity + activityReset > now_)
            return;
        unlink(connection);
        connection.before = connection.after = &connection;
        connection.awaitsReset = false;
        const MVCommActivityMessage silence{kMVCommActivity, connection.pid, 0.0F};
        if (!connection.descriptor)
            std::erase_if(closed_, [&](const auto& closed) { return closed.get() == &connection; });
        callbacks_.dataCallback()(&silence);
    }
}

void BareWireServer::sendMessage(const MVCommConsoleMessage& message) noexcept {
    for (const auto& connection : connections_) {
        const ssize_t sent = ::send(connection->descriptor.get(), &message, sizeof message,
                                    MSG_DONTWAIT | MSG_NOSIGNAL);
        if (sent != ssize_t{sizeof message})
            qnlog_msg(log_, qnlog_error, "send failed: %s", std::strerror(errno));
    }
}

std::size_t BareWireServer::checkedIn() const noexcept {
    return static_cast<std::size_t>(std::ranges::count_if(
        connections_, [](const auto& connection) { return connection->isCheckedIn; }));
}

} // namespace bench
