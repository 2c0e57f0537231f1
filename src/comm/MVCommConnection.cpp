#include "comm/MVCommConnection.h"

#include "comm/MVCommLogText.h"
#include "platform/base/SystemLog.h"
#include "platform/loop/RunLoopSource.h"
#include "platform/loop/Socket.h"
#include "platform/loop/Timer.h"

#include <cerrno>
#include <cstring>

void MVCommSender::send(const MVCommConsoleMessage& message) noexcept {
    if (socket_->send(std::as_bytes(std::span(&message, 1))))
        return;
    const int error = errno;
    if (failureLimit_.allowsLine())
        platform::systemLog(platform::LogPriority::error, "send failed: %s (%d)",
                            std::strerror(error), error);
}

MVCommConnection::MVCommConnection(platform::RunLoop& loop,
                                   std::shared_ptr<platform::DataSocket> socket,
                                   std::unique_ptr<platform::RunLoopSource> source)
    : socket_(std::move(socket))
    , source_(std::move(source))
    , sender_(std::make_shared<MVCommSender>(socket_))
    , faultLog_(loop, [this](std::size_t leftOut) {
        platform::systemLog(platform::LogPriority::error,
                            "Suppressed %zu more lines about data from %s/%u", leftOut,
                            qUtf8Printable(MVCommLogText(process_.name)), process_.pid);
    }) {}

MVCommConnection::~MVCommConnection() {
    shutdown();
}

void MVCommConnection::setResetActivityTimer(std::unique_ptr<platform::Timer> timer) {
    resetActivityTimer_ = std::move(timer);
}

void MVCommConnection::shutdown() noexcept {
    source_.reset();
    if (socket_ != nullptr)
        socket_->invalidate();
    sender_.reset();
    socket_.reset();
}
