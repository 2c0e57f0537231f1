#pragma once

#include "framework/log/qnlog_handle.h"
#include "platform/base/Mutex.h"

#include <chrono>
#include <vector>

namespace QN::log {

/// The open logs, so that their waiting messages are not lost when the program ends by exit(3) or
/// by returning from main(): the last thing that happens then is writing all of them, after the
/// destructors of static objects, which may still log. Each log is written by its own thread, since
/// the pool may be busy and a disk may hang. Any thread.
class OpenLogs {
  public:
    static OpenLogs& instance();

    void add(qnlog_handle* log);

    /// False if the log must stay because the end of the program is writing it.
    [[nodiscard]] bool remove(const qnlog_handle* log);

    /// Whether the calling thread's thread-local objects have been destroyed. exit(3) destroys
    /// those of its thread before any static object, so this tells a call at the end of the
    /// program. Works on the main thread and on threads that have opened a log.
    [[nodiscard]] static bool isThreadOver() noexcept;

    /// Called at the end of the program.
    void writeAll();

    /// How long the end of the program waits for all logs together; 2 s unless a test says
    /// otherwise.
    void setPatience(std::chrono::nanoseconds patience);

  private:
    struct Entry {
        qnlog_handle* log;
        bool isWritten;
    };

    void write(qnlog_handle* log);
    bool areWritten() const REQUIRES(mutex_);

    platform::Mutex mutex_;
    platform::Condition written_;
    std::vector<Entry> logs_ GUARDED_BY(mutex_);
    bool isEnding_ GUARDED_BY(mutex_) = false;
    std::chrono::nanoseconds patience_ GUARDED_BY(mutex_) = std::chrono::seconds(2);
};

} // namespace QN::log
