#include "framework/log/OpenLogs.h"

#include "platform/base/Mutex.h"
#include "platform/base/ThreadCalls.h"

#include <algorithm>
#include <atomic>
#include <exception>

namespace QN::log {

namespace {

std::atomic<OpenLogs*> existing{nullptr};

thread_local constinit bool isOver = false; // has no destructor, so it stays to the thread's end

struct ThreadEnd {
    ~ThreadEnd() { isOver = true; }
};

void noticeThreadEnd() noexcept {
    thread_local const ThreadEnd end;
    static_cast<void>(&end);
}

/// The main thread may end the program without having opened a log.
[[gnu::constructor]] void noticeMainThreadEnd() noexcept {
    noticeThreadEnd();
}

/// Comes after the destructors of all static objects, whenever they were made.
[[gnu::destructor]] void writeAtEnd() {
    OpenLogs* const logs = existing.load();
    if (logs && !QN::async::queue::isOrphaned())
        logs->writeAll();
}

} // namespace

OpenLogs& OpenLogs::instance() {
    // Never destroyed: static objects may still close logs.
    static OpenLogs* const logs = [] {
        auto* const made = new OpenLogs;
        existing = made;
        return made;
    }();
    return *logs;
}

void OpenLogs::add(qnlog_handle* log) {
    noticeThreadEnd();
    const platform::ScopedLock lock(mutex_);
    logs_.push_back({log, false});
}

bool OpenLogs::remove(const qnlog_handle* log) {
    const platform::ScopedLock lock(mutex_);
    if (!isEnding_)
        std::erase_if(logs_, [log](const Entry& each) { return each.log == log; });
    return !isEnding_;
}

bool OpenLogs::isThreadOver() noexcept {
    return isOver;
}

void OpenLogs::setPatience(std::chrono::nanoseconds patience) {
    const platform::ScopedLock lock(mutex_);
    patience_ = patience;
}

void OpenLogs::writeAll() {
    const platform::ScopedLock lock(mutex_);
    isEnding_ = true;
    for (const Entry& each : logs_) {
        try {
            platform::startDetachedThread("log at exit", [this, log = each.log] { write(log); });
        } catch (const std::exception&) { // the pool may come to it in time
        }
    }
    const auto end = std::chrono::steady_clock::now() + patience_;
    while (!areWritten() && written_.waitUntil(mutex_, end)) {
    }
}

bool OpenLogs::areWritten() const {
    return std::all_of(logs_.begin(), logs_.end(),
                       [](const Entry& each) { return each.isWritten; });
}

void OpenLogs::write(qnlog_handle* log) {
    log->flush();
    const platform::ScopedLock lock(mutex_);
    for (Entry& each : logs_)
        each.isWritten |= each.log == log;
    written_.notifyAll();
}

} // namespace QN::log
