#pragma once

#include "framework/log/qnlog_handle.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <vector>

namespace QN::log {

/// The logs that are open, so that what waits in them is not lost when the program ends by exit(3)
/// or by returning from main(): the last thing that it does then is to have all of them written.
/// Static objects are gone by then, and could still log. Each log is written by a thread of its
/// own, since the pool may be busy and a disk may hang. Any thread.
class OpenLogs {
  public:
    static OpenLogs& instance();

    void add(qnlog_handle* log);

    /// False when the log must stay, since the end of the program is writing it.
    [[nodiscard]] bool remove(const qnlog_handle* log);

    /// Whether the calling thread's own objects are gone. exit(3) destroys those of its thread
    /// before any static object, so whatever calls from there, calls at the end of the program.
    /// Only the main thread and those that have opened a log notice.
    static bool isThreadOver() noexcept;

    /// For the end of the program, which calls it.
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

    std::mutex mutex_;
    std::condition_variable written_;
    // Guarded by mutex_.
    std::vector<Entry> logs_;
    bool isEnding_ = false;
    std::chrono::nanoseconds patience_ = std::chrono::seconds(2);
};

} // namespace QN::log
