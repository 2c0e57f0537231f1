#include "platform/base/SystemLog.h"

#include "platform/base/HarmlessText.h"
#include "platform/base/LastLine.h"
#include "platform/base/Mutex.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string>
#include <sys/stat.h>
#include <sys/uio.h>
#include <syslog.h>
#include <unistd.h>
#include <utility>

namespace platform {

namespace {

SharedMutex sinkMutex; // shared while a sink receives a line, which may take a while
SystemLogSink* currentSink GUARDED_BY(sinkMutex) = nullptr;

int syslogPriority(LogPriority priority) noexcept {
    switch (priority) {
    case LogPriority::error:
        return LOG_ERR;
    case LogPriority::warning:
        return LOG_WARNING;
    case LogPriority::info:
        break;
    }
    return LOG_INFO;
}

iovec piece(std::string_view text) noexcept {
    // writev does not change what it is given; its type merely has no constant variant.
    return {const_cast<char*>(text.data()), text.size()};
}

void writeToStandardError(std::string_view text) noexcept {
    const std::array<iovec, 4> line{piece(program_invocation_short_name), piece(": "), piece(text),
                                    piece("\n")};
    [[maybe_unused]] const ssize_t written =
        ::writev(STDERR_FILENO, line.data(), static_cast<int>(line.size()));
}

/// Whether standard error leads to the journal, which takes what syslog gets as well: a service's
/// lines would stand there twice.
bool isStandardErrorTheJournal() noexcept {
    const char* const variable = std::getenv("JOURNAL_STREAM"); // device:inode
    struct stat status {};
    if (variable == nullptr || ::fstat(STDERR_FILENO, &status) != 0)
        return false;
    std::array<char, 48> own{};
    std::snprintf(own.data(), own.size(), "%ju:%ju", static_cast<std::uintmax_t>(status.st_dev),
                  static_cast<std::uintmax_t>(status.st_ino));
    return std::string_view(variable) == own.data();
}

void writeLine(LogPriority priority, std::string_view text) noexcept {
    {
        const SharedLock lock(sinkMutex);
        if (currentSink != nullptr) {
            currentSink->line(priority, text);
            return;
        }
    }
    ::syslog(LOG_USER | syslogPriority(priority), "%.*s", static_cast<int>(text.size()),
             text.data());
    if (!isStandardErrorTheJournal())
        writeToStandardError(text);
}

} // namespace

void systemLog(LogPriority priority, const char* format, ...) noexcept {
    // Long enough for the longest line of the sockets' code: a check-in with a full path.
    std::array<char, 4096> line{};
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(line.data(), line.size(), format, arguments);
    va_end(arguments);
    if (length < 0)
        return;
    const auto size = std::min(static_cast<std::size_t>(length), line.size() - 1);
    // The lines contain names from other programs: they must not begin new lines.
    makeHarmless(std::span(line).first(size), ControlsKept::none);
    keepLastLine({line.data(), size});
    writeLine(priority, {line.data(), size});
}

SystemLogSink::SystemLogSink() {
    const ScopedLock lock(sinkMutex);
    previous_ = std::exchange(currentSink, this);
}

SystemLogSink::~SystemLogSink() {
    end();
}

void SystemLogSink::end() noexcept {
    const ScopedLock lock(sinkMutex);
    if (currentSink == this)
        currentSink = previous_;
}

} // namespace platform
