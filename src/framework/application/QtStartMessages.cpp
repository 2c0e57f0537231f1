#include "framework/application/QtStartMessages.h"

#include "platform/base/Mutex.h"
#include "platform/base/SystemLog.h"

#include <algorithm>
#include <cstdlib>
#include <span>
#include <string_view>

namespace {

QtStartMessages* running = nullptr;

bool isDisplayNamed(int argc, char** argv) {
    constexpr const char* variables[] = {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"};
    const bool isInEnvironment = std::ranges::any_of(
        variables, [](const char* variable) { return !qEnvironmentVariableIsEmpty(variable); });
    const std::span arguments(argv, static_cast<std::size_t>(argc));
    return isInEnvironment || std::ranges::any_of(arguments, [](std::string_view argument) {
               return argument.ends_with("-platform") || argument.ends_with("-display");
           });
}

} // namespace

QtStartMessages::QtStartMessages(int argc, char** argv)
    : isDisplayNamed_(isDisplayNamed(argc, argv)), former_(qInstallMessageHandler(&take)) {
    running = this;
}

QtStartMessages::~QtStartMessages() {
    qInstallMessageHandler(former_);
    running = nullptr;
    for (const QString& message : std::as_const(messages_))
        platform::systemLog(platform::LogPriority::warning, "%s", qUtf8Printable(message));
}

void QtStartMessages::take(QtMsgType type, const QMessageLogContext& /*context*/,
                           const QString& message) {
    if (type == QtFatalMsg)
        running->fail(message);
    const platform::ScopedLock lock(running->mutex_);
    running->messages_.append(message);
}

/// The first message is more helpful than the last one, which advises to reinstall the program.
void QtStartMessages::fail(const QString& message) {
    const platform::ScopedLock lock(mutex_);
    const QString& reason = messages_.isEmpty() ? message : messages_.first();
    if (isDisplayNamed_)
        platform::systemLog(platform::LogPriority::error,
                            "No window can be shown (%s): DISPLAY, WAYLAND_DISPLAY or --platform "
                            "must name a running display.",
                            qUtf8Printable(reason.trimmed()));
    else
        platform::systemLog(platform::LogPriority::error,
                            "There is no display: set DISPLAY or WAYLAND_DISPLAY.");
    std::_Exit(1);
}
