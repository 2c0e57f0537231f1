#include "plugin/connection/AppConnection.h"

#include "comm/MVCommLogLimit.h"
#include "comm/MVCommSocketPath.h"
#include "platform/base/SystemLog.h"
#include "platform/loop/RunLoopSource.h"
#include "platform/loop/Socket.h"
#include "platform/loop/UnixSocket.h"
#include "platform/processes/ProcessInfo.h"
#include "plugin/identity/ProgramProcess.h"

#include <cerrno>
#include <cstring>
#include <unistd.h>
#include <utility>

using platform::LogPriority;
using platform::systemLog;

namespace {

constexpr uid_t administrator = 0;

bool isTrusted(const platform::FileDescriptor& socket) noexcept {
    uid_t user = 0;
    return platform::peerUser(socket.get(), user) && (user == ::geteuid() || user == administrator);
}

/// One line for a socket that is tried again and again.
void logStranger(const std::string& path) {
    static std::string last;
    if (std::exchange(last, path) != path)
        systemLog(LogPriority::warning, "Ignored %s, which another user serves", path.c_str());
}

platform::FileDescriptor connectToApplication() {
    for (const std::string& path : MVCommCandidateSocketPaths()) {
        platform::FileDescriptor socket = platform::connectUnixSocket(path);
        if (!socket)
            continue;
        if (isTrusted(socket))
            return socket;
        logStranger(path);
    }
    return {};
}

/// One line for a command that every connection gets.
void logIgnored(const char* why, std::int64_t value) {
    static MVCommLogLimit limit;
    if (limit.allowsLine())
        systemLog(LogPriority::warning, "Ignored a command %s %lld", why,
                  static_cast<long long>(value));
}

/// Whether the command is valid, for any pid; logs the error otherwise.
bool isWellFormed(const MVCommConsoleMessage& command) {
    const bool hasValidType = command.type == kMVCommSetVolume || command.type == kMVCommSetMute ||
                              command.type == kMVCommIgnoreListChanged;
    const bool hasValidValue =
        command.type != kMVCommSetMute || command.value == 0 || command.value == 1;
    if (!hasValidType)
        logIgnored("of unknown type", command.type);
    else if (command.reserved != 0)
        logIgnored("with a nonzero reserved field:", command.reserved);
    else if (!hasValidValue)
        logIgnored("to mute with an invalid value:", command.value);
    else
        return true;
    return false;
}

template <typename Message>
bool send(const platform::DataSocket& socket, const Message& message) noexcept {
    return socket.send(std::as_bytes(std::span(&message, 1)));
}

} // namespace

AppConnection::AppConnection(std::uint32_t process, Listener& listener) noexcept
    : process_(process), listener_(listener) {}

AppConnection::~AppConnection() = default;

std::unique_ptr<AppConnection>
AppConnection::open(platform::RunLoop& loop, const ProgramProcess& program, Listener& listener) {
    std::unique_ptr<AppConnection> connection(new AppConnection(program.pid, listener));
    return connection->start(loop, program) ? std::move(connection) : nullptr;
}

bool AppConnection::isServedBy(const ProgramProcess& program) {
    const platform::FileDescriptor socket = connectToApplication();
    const auto peer = socket ? platform::peerProcess(socket.get()) : std::nullopt;
    return peer && program.startTime && static_cast<std::uint32_t>(*peer) == program.pid &&
           platform::processStartTime(*peer) == program.startTime;
}

bool AppConnection::start(platform::RunLoop& loop, const ProgramProcess& program) {
    platform::FileDescriptor descriptor = connectToApplication();
    if (!descriptor)
        return false;
    socket_ = platform::DataSocket::create(
        std::move(descriptor),
        [this](platform::DataSocket&, std::span<const std::byte> bytes) { delivered(bytes); });
    source_ = socket_->makeSource(loop);

    MVCommCheckinMessage checkin{};
    checkin.messageID = kMVCommCheckin;
    checkin.pid = program.pid;
    program.name.copy(checkin.name, sizeof checkin.name - 1);
    program.path.copy(checkin.path, sizeof checkin.path - 1);
    if (source_ != nullptr && send(*socket_, checkin))
        return true;
    systemLog(LogPriority::error, "Couldn't check in %s: %s (%d)", program.name.c_str(),
              std::strerror(errno), errno);
    return false;
}

void AppConnection::sendLevel(float level) noexcept {
    // A broken connection is noticed where it is read.
    [[maybe_unused]] const bool sent =
        send(*socket_, MVCommActivityMessage{kMVCommActivity, process_, level});
}

void AppConnection::delivered(std::span<const std::byte> bytes) {
    if (bytes.empty()) {
        if (commands_.pending() > 0)
            logIgnored("that was cut off after byte",
                       static_cast<std::int64_t>(commands_.pending()));
        listener_.connectionLost();
        return;
    }
    while (const auto command = commands_.next(bytes))
        take(*command);
}

void AppConnection::take(const MVCommConsoleMessage& command) {
    if (isWellFormed(command) && (command.type == kMVCommIgnoreListChanged ||
                                  static_cast<std::uint32_t>(command.pid) == process_))
        listener_.commandArrived(command);
}
