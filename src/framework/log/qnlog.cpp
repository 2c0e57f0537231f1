#include "framework/log/qnlog.h"

#include "framework/log/LogBanner.h"
#include "framework/log/LogPrefixes.h"
#include "framework/log/LogRotation.h"
#include "framework/log/OpenLogs.h"
#include "framework/log/qnlog_handle.h"

#include "platform/base/LastLine.h"
#include "platform/base/WallClock.h"
#include "platform/bundle/Bundle.h"
#include "platform/processes/SystemFacts.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <unistd.h>

using platform::WallClock;
using QN::log::LogFile;
using QN::log::OpenLogs;

namespace {

constexpr std::uint32_t usedFlags = 0x00FFFFFF;
constexpr std::uint32_t levels = 17;
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

std::unique_ptr<qnlog_handle> makeHandle(const std::string& path, std::uint32_t flags) {
    if ((flags & QNLOG_ROTATE) != 0)
        QN::log::rotate(path);
    const bool isNew = (flags & QNLOG_BOM) != 0 && !QN::log::fileExists(path);
    platform::FileDescriptor file = LogFile::open(path);
    if (!file)
        return nullptr;
    const bool isTorn = LogFile::endsWithinLine(path);
    return std::make_unique<qnlog_handle>(
        LogFile(std::move(file), &::write),
        qnlog_handle::Settings{.flags = flags & usedFlags,
                               .path = path,
                               .banner = QN::log::banner(platform::Bundle::main(),
                                                         platform::productVersion(),
                                                         platform::productBuild()),
                               .beginning = isNew    ? byteOrderMark
                                            : isTorn ? "\n"
                                                     : ""});
}

struct FilesDeleter {
    std::size_t count;
    void operator()(char** files) const noexcept {
        std::for_each_n(files, count, [](char* file) { std::free(file); });
        std::free(static_cast<void*>(files));
    }
};

void append(qnlog_handle& log, std::uint32_t level, WallClock::time_point time,
            std::string_view text) {
    if (text.empty())
        return;
    platform::keepLastLine(text);
    if (QN::log::prefixes::areThere(log.number()))
        log.append(level, time, QN::log::prefixes::prefixed(log.number(), text));
    else
        log.append(level, time, text);
}

/// Without a buffer for what is a string already.
void appendString(qnlog_handle& log, std::uint32_t level, WallClock::time_point time,
                  const char* text) {
    append(log, level, time, text ? std::string_view(text) : "(null)");
}

void appendFormatted(qnlog_handle& log, std::uint32_t level, WallClock::time_point time,
                     const char* format, va_list arguments) {
    std::array<char, 1024> usual; // NOLINT(cppcoreguidelines-pro-type-member-init)
    va_list again;
    va_copy(again, arguments);
    const int result = std::vsnprintf(usual.data(), usual.size(), format, arguments);
    const auto length = static_cast<std::size_t>(std::max(result, 0));
    if (length < usual.size()) {
        append(log, level, time, {usual.data(), length});
    } else {
        std::string text(length, '\0');
        std::vsnprintf(text.data(), length + 1, format, again);
        append(log, level, time, text);
    }
    va_end(again);
}

} // namespace

qnlog_handle* qnlog_open(const char* path, std::uint32_t flags) {
    if (QN::async::queue::isOrphaned())
        return nullptr;
    try {
        auto log = makeHandle(path, flags);
        if (!log)
            return nullptr;
        OpenLogs::instance().add(log.get());
        if ((flags & QNLOG_BANNER) != 0)
            qnlog_msg(log.get(), qnlog_always, "%s", log->banner().c_str());
        return log.release();
    } catch (...) { // no memory, or no thread to write with
        return nullptr;
    }
}

void qnlog_close(qnlog_handle* handle) {
    // A child made by fork(2) leaves it be: there, what threads of the parent hold is never free.
    if (!handle || QN::async::queue::isOrphaned())
        return;
    QN::log::prefixes::erase(handle->number());
    if (OpenLogs::isThreadOver())
        return; // the program ends, which writes what waits, within its bound
    handle->finish();
    if (OpenLogs::instance().remove(handle))
        qnlog_handle::destroyLater(handle);
}

std::uint32_t qnlog_getlevel(const qnlog_handle* handle) {
    return handle->level();
}

bool qnlog_wants(const qnlog_handle* handle, std::uint32_t level) {
    return handle->wants(level);
}

void qnlog_setlevel(qnlog_handle* handle, std::uint32_t level) {
    if (level < levels)
        handle->setLevel(level);
}

void qnlog_msg(qnlog_handle* handle, std::uint32_t level, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    _qnlogmsg_FREE(handle, level, format, arguments);
    va_end(arguments);
}

void _qnlogmsg_FREE(qnlog_handle* handle, std::uint32_t level, const char* format,
                    va_list arguments) {
    if (!handle->wants(level))
        return; // formatting it would have no effect
    const WallClock::time_point now = WallClock::now();
    try {
        if (std::strcmp(format, "%s") == 0)
            appendString(*handle, level, now, va_arg(arguments, const char*));
        else
            appendFormatted(*handle, level, now, format, arguments);
    } catch (const std::bad_alloc&) { // lost, as a line that cannot be written
    }
}

char** qnlog_rotated_files(const char* path, std::size_t* count) {
    constexpr std::size_t backups = QN::log::lastBackup + 1;
    *count = 0;
    std::unique_ptr<char*[], FilesDeleter> files(
        static_cast<char**>(std::calloc(backups, sizeof(char*))), FilesDeleter{backups});
    if (!files)
        return nullptr;
    try {
        const std::string file = QN::log::rotatedFile(path);
        for (std::size_t i = 0; i < backups; ++i) {
            const std::string backup = QN::log::backupPath(file, static_cast<int>(i));
            if (!QN::log::fileExists(backup))
                continue;
            files[i] = ::strdup(backup.c_str());
            if (!files[i])
                return nullptr;
        }
    } catch (const std::exception&) {
        return nullptr;
    }
    *count = backups;
    return files.release();
}
