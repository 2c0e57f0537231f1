#include "comm/MVCommunication.h"

#include "comm/MVCommConnection.h"
#include "comm/MVCommListener.h"
#include "comm/MVCommLogText.h"
#include "comm/MVCommOperation.h"
#include "framework/application/QNApplication.h"
#include "platform/base/ExceptionReport.h"
#include "platform/base/Mutex.h"
#include "platform/base/SystemLog.h"
#include "platform/loop/DispatchQueue.h"
#include "platform/loop/RunLoop.h"
#include "platform/loop/RunLoopSource.h"
#include "platform/loop/Socket.h"
#include "platform/loop/UnixSocket.h"

#include <QFile>

#include <algorithm>
#include <cstring>
#include <utility>

using platform::LogPriority;
using platform::systemLog;

namespace {

constexpr std::size_t longestAddress = 253;
constexpr std::chrono::milliseconds activityReset{100};
constexpr std::chrono::milliseconds connectionCallbackDelay{50};
constexpr std::chrono::milliseconds longestBurst{500};
constexpr double repetitionInterval = 1.0 / 12.0;

// What one plug-in is served in a turn of the loop: more than an honest one ever has waiting, less
// than a millisecond of work.
constexpr std::size_t readPerTurn = std::size_t{8} * 1024;
static_assert(readPerTurn >= sizeof(MVCommCheckinMessage), "a cut read holds a whole message");

double secondsNow() noexcept {
    return std::chrono::duration<double>(platform::MonotonicClock::now().time_since_epoch())
        .count();
}

void logFault(MVCommConnection& connection, MVCommParser::Result result, const MVCommParser& parser,
              const char* method) {
    if (result == MVCommParser::Result::end || !connection.faultLog().allowsLine())
        return;
    switch (result) {
    case MVCommParser::Result::tooShort:
        systemLog(LogPriority::error, "%s: Message too short (%d).", method, parser.remaining());
        break;
    case MVCommParser::Result::invalidLength:
        if (parser.messageID() == kMVCommActivity)
            systemLog(LogPriority::error,
                      "%s: Invalid data len (%d) for messageID 0x%04x (expected %zu)", method,
                      parser.remaining(), parser.messageID(), sizeof(MVCommActivityMessage));
        else
            systemLog(LogPriority::error, "%s: Invalid data len (%d) for messageID 0x%04x", method,
                      parser.remaining(), parser.messageID());
        break;
    case MVCommParser::Result::unknown:
        systemLog(LogPriority::error, "%s: Unknown messageID 0x%04x", method, parser.messageID());
        break;
    case MVCommParser::Result::end:
    case MVCommParser::Result::activity:
    case MVCommParser::Result::checkin:
        break;
    }
}

/// Of a read that was cut, what can be taken now. An unfinished message at its end waits for the
/// rest; behind a fault, all that the plug-in has sent counts as the same read and is dropped.
std::span<const std::byte> wholeMessages(platform::DataSocket& socket,
                                         std::span<const std::byte> data) {
    if (!socket.isCut())
        return data;
    MVCommParser ahead(data);
    MVCommParser::Result result = ahead.next();
    while (result == MVCommParser::Result::activity || result == MVCommParser::Result::checkin)
        result = ahead.next();
    if (result == MVCommParser::Result::unknown) {
        socket.skipQueued();
        return data;
    }
    const auto unfinished = data.last(static_cast<std::size_t>(ahead.remaining()));
    socket.putBack(unfinished);
    return data.first(data.size() - unfinished.size());
}

std::string keyOf(const MVCommConsoleMessage& message) {
    // The pid is not part of the key, so programs set to the same value share an entry.
    return std::to_string(message.type) + ", " + std::to_string(message.reserved) + ", " +
           std::to_string(message.value);
}

} // namespace

std::shared_ptr<MVCommunication> MVCommunication::create(MVCommCallbacks& comm,
                                                         const QString& socketPath) {
    std::shared_ptr<MVCommunication> server(new MVCommunication(comm, socketPath));
    if (!server->setup())
        return nullptr;
    return server;
}

MVCommunication::MVCommunication(MVCommCallbacks& comm, QString socketPath)
    : comm_(comm)
    , socketPath_(std::move(socketPath))
    , runLoop_(platform::RunLoop::current())
    , connectionCallbackTimer_(*runLoop_, [this] { connectionCallbackDelayed(); })
    , sendQueue_(platform::DispatchQueue::makeSerial("com.quarnel.mivo.send")) {}

MVCommunication::~MVCommunication() {
    shutdown();
}

bool MVCommunication::setup() {
    const std::string address = QFile::encodeName(socketPath_).left(longestAddress).toStdString();
    const auto accepted = [this](platform::AcceptSocket& socket,
                                 platform::FileDescriptor connection) {
        handleBaseSocketAccept(socket, std::move(connection));
    };
    listener_ = MVCommListener::open(address, {accepted, [this] { comm_.socketRecreated(); }});
    return listener_ != nullptr;
}

bool MVCommunication::isFolderReplaced() const {
    return listener_ != nullptr && listener_->isFolderReplaced();
}

void MVCommunication::stopRecreating() {
    if (listener_ != nullptr)
        listener_->stopRecreating();
}

bool MVCommunication::isWelcome(int descriptor) {
    auto user = static_cast<uid_t>(-1);
    if (platform::peerUser(descriptor, user) && comm_.acceptsUser(user))
        return true;
    if (strangerLimit_.allowsLine())
        systemLog(LogPriority::warning, "Closed the connection of a program of user %u", user);
    return false;
}

void MVCommunication::handleBaseSocketAccept(platform::AcceptSocket& /*socket*/,
                                             platform::FileDescriptor descriptor) {
    if (!isWelcome(descriptor.get()))
        return;
    auto socket = platform::DataSocket::create(
        std::move(descriptor),
        [this](platform::DataSocket& sender, std::span<const std::byte> data) {
            handleSocketData(sender, wholeMessages(sender, data));
        });
    auto source = socket->makeSource(*runLoop_, readPerTurn);
    if (source == nullptr)
        return;
    const auto connection =
        std::make_shared<MVCommConnection>(*runLoop_, socket, std::move(source));
    connection->setResetActivityTimer(std::make_unique<platform::Timer>(
        *runLoop_, [this, &record = *connection] { resetActivity(record); }));

    const auto index = static_cast<std::size_t>(socket->descriptor());
    if (index >= placeOfDescriptor_.size())
        placeOfDescriptor_.resize(index + 1);
    const platform::ScopedLock lock(connectionsLock_);
    placeOfDescriptor_[index] = connections_.insert(connections_.end(), connection);
    senders_.reset();
}

std::shared_ptr<MVCommConnection>
MVCommunication::connectionOf(const platform::DataSocket& socket) const {
    const auto index = static_cast<std::size_t>(socket.descriptor());
    if (index >= placeOfDescriptor_.size())
        return nullptr;
    const auto& place = placeOfDescriptor_[index];
    return place && (**place)->socket() == &socket ? **place : nullptr;
}

void MVCommunication::handleSocketData(const platform::DataSocket& socket,
                                       std::span<const std::byte> data) {
    if (data.data() == nullptr) {
        systemLog(LogPriority::error, "%s: Bad data object.", __func__);
        return;
    }
    // Both are held to the end: a callback may run its own event loop, in which the plug-in may
    // disconnect or the server may be shut down and released.
    const auto self = shared_from_this();
    const std::shared_ptr<MVCommConnection> connection = connectionOf(socket);
    if (connection == nullptr) {
        systemLog(LogPriority::error, "%s: Couldn't find obj for socket", __func__);
        return;
    }
    if (data.empty()) {
        handleDisconnect(connection);
        return;
    }
    MVCommParser parser(data);
    const auto end = handleMessages(*connection, parser, __func__);
    logFault(*connection, end, parser, __func__);
    if (connection->socket() == nullptr)
        retire(connection);
}

MVCommParser::Result MVCommunication::handleMessages(MVCommConnection& connection,
                                                     MVCommParser& parser, const char* method) {
    for (;;) {
        const MVCommParser::Result result = parser.next();
        if (result == MVCommParser::Result::activity) {
            platform::guarded(platform::kExceptionInDataCallback,
                              [&] { comm_.dataCallback()(&parser.activity()); });
            connection.resetActivityTimer()->start(activityReset);
            if (connection.socket() == nullptr)
                return MVCommParser::Result::end; // shut down, or disconnected, in the callback
        } else if (result == MVCommParser::Result::checkin) {
            handleCheckin(connection, parser.checkin(), method);
        } else {
            return result;
        }
    }
}

void MVCommunication::handleCheckin(MVCommConnection& connection,
                                    const MVCommParser::Checkin& checkin, const char* method) {
    // What is not UTF-8 becomes replacement characters.
    const QString name = QString::fromUtf8(checkin.name);
    MVCommConnectionProcess previous{checkin.pid,
                                     name.isEmpty() ? QString::number(checkin.pid) : name,
                                     QString::fromUtf8(checkin.path)};
    {
        const platform::ScopedLock lock(connectionsLock_);
        std::swap(connection.process(), previous);
    }
    const bool isDuplicate = !previous.name.isNull() || previous.pid >= 1;
    if (isDuplicate && connection.faultLog().allowsLine())
        systemLog(LogPriority::error, "%s: Duplicate checkin for %s/%u, overwriting", method,
                  qUtf8Printable(MVCommLogText(previous.name)), previous.pid);
    QNLog(3, "'%s' connected (pid=%u, path='%s')", MVCommLogText(name), checkin.pid,
          MVCommLogText(connection.process().path));

    if (comm_.connectionCallback() != nullptr)
        scheduleConnectionCallback();
}

/// A plug-in that keeps checking in must not delay showing the others.
void MVCommunication::scheduleConnectionCallback() {
    const auto now = platform::MonotonicClock::now();
    if (!connectionCallbackTimer_.isActive())
        burstBegan_ = now;
    connectionCallbackTimer_.startAt(std::min(now, burstBegan_ + longestBurst) +
                                     connectionCallbackDelay);
}

void MVCommunication::handleDisconnect(const std::shared_ptr<MVCommConnection>& connection) {
    const auto index = static_cast<std::size_t>(connection->socket()->descriptor());
    const auto place = *std::exchange(placeOfDescriptor_[index], std::nullopt);
    {
        const platform::ScopedLock lock(connectionsLock_);
        connections_.erase(place);
        senders_.reset();
    }
    QNLog(3, "'%s' disconnected", MVCommLogText(connection->process().name));
    retire(connection);
    if (listener_ != nullptr)
        listener_->resume(); // a descriptor becomes free
    if (const MVCommCallback callback = comm_.disconnectionCallback())
        callback();
}

void MVCommunication::retire(const std::shared_ptr<MVCommConnection>& connection) {
    connection->shutdown();
    retired_.remove(connection);
    if (connection->resetActivityTimer()->isActive())
        retired_.push_back(connection);
}

void MVCommunication::connectionCallbackDelayed() {
    if (const MVCommCallback callback = comm_.connectionCallback())
        callback();
}

void MVCommunication::resetActivity(MVCommConnection& connection) {
    const auto isThis = [&connection](const auto& retired) { return retired.get() == &connection; };
    const MVCommActivityMessage silence{kMVCommActivity, connection.process().pid, 0.0F};
    retired_.remove_if(isThis);
    comm_.dataCallback()(&silence);
}

void MVCommunication::sendMessage(const MVCommConsoleMessage* message) {
    if (suppressMessages_ || message == nullptr)
        return;
    {
        const platform::ScopedLock lock(connectionsLock_);
        if (connections_.empty())
            return;
    }
    const MVCommOperation operation(*this, &MVCommunication::doSendMessage, *message);
    sendQueue_->async([operation] { operation.main(); });
}

void MVCommunication::doSendMessage(const MVCommConsoleMessage& message) {
    LastMessage& last = lastMessages_[keyOf(message)];
    const double now = secondsNow();
    const bool repeated = std::memcmp(last.bytes.data(), &message, sizeof message) == 0 &&
                          now - last.sent < repetitionInterval;
    if (repeated && !allowFrequentMessages_)
        return;

    const std::shared_ptr<const Senders> targets = senders(); // held while they are written to
    for (const auto& sender : *targets)
        sender->send(message);

    std::memcpy(last.bytes.data(), &message, sizeof message);
    last.sent = secondsNow();
}

std::shared_ptr<const MVCommunication::Senders> MVCommunication::senders() {
    const platform::ScopedLock lock(connectionsLock_);
    if (senders_ == nullptr) {
        Senders senders;
        senders.reserve(connections_.size());
        for (const auto& connection : connections_)
            senders.push_back(connection->sender());
        senders_ = std::make_shared<const Senders>(std::move(senders));
    }
    return senders_;
}

QList<MVCommConnectionProcess> MVCommunication::connectionProcesses() const {
    const platform::ScopedLock lock(connectionsLock_);
    QList<MVCommConnectionProcess> processes;
    processes.reserve(static_cast<qsizetype>(connections_.size()));
    for (const auto& connection : connections_)
        processes.push_back(connection->process());
    return processes;
}

bool MVCommunication::isAnybodyConnected() const {
    const platform::ScopedLock lock(connectionsLock_);
    return !connections_.empty();
}

void MVCommunication::shutdown() {
    sendQueue_->sync([] {});
    Connections connections;
    {
        const platform::ScopedLock lock(connectionsLock_);
        connections.swap(connections_);
        senders_.reset();
    }
    placeOfDescriptor_.clear();
    for (const auto& connection : connections)
        retire(connection);
    connectionCallbackTimer_.stop();
    listener_.reset();
}
