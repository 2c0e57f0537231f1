#pragma once

#include "framework/async/Signal.h"
#include "framework/async/queue.h"
#include "framework/log/LineComposer.h"
#include "framework/log/LineQueue.h"
#include "framework/log/LogFile.h"
#include "framework/log/qnlog.h"

#include "platform/WallClock.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// One open log. Its messages wait in a LineQueue for the writer, a task of the serial queue
/// "com.quarnel.log" that writes all there is.
///
/// Having the pool wake a thread costs a caller more than everything else. So a writer that has
/// nothing more to do lingers for a moment: as long as messages keep coming, one task writes
/// them by and by, and callers do not touch the pool. The order is that of the LineQueue, and
/// closing waits for the writer's task, so all this shows only as a delay of `lingering`.
class qnlog_handle {
  public:
    static constexpr std::chrono::milliseconds lingering{2};

    struct Settings {
        std::uint32_t flags = 0; ///< the low 24 bits of qnlog_open()'s
        std::string path = {};
        std::string banner = {};
        bool startsWithMark = false;   ///< the file is new and gets a byte-order mark
        std::size_t bound = 32U << 20; ///< bytes of messages that may wait
    };

    /// Throws std::bad_alloc, or std::system_error when there is no thread for the pool.
    qnlog_handle(QN::log::LogFile file, Settings settings);

    /// Returns when everything has been written.
    ~qnlog_handle();
    qnlog_handle(const qnlog_handle&) = delete;
    qnlog_handle& operator=(const qnlog_handle&) = delete;

    /// Whether a message of that level would be written.
    bool wants(std::uint32_t level) const noexcept { return lines_.wants(level); }

    /// Has `text` written with the given time, unless it is empty or the log is not usable any more
    /// (in a child made by fork).
    void append(std::uint32_t level, platform::WallClock::time_point time,
                std::string_view text) noexcept;

    void setLevel(std::uint32_t level) noexcept;

    /// Waits until what has been appended is written, no longer than until `deadline`. Throws
    /// std::bad_alloc.
    void drain(std::chrono::steady_clock::time_point deadline);

    std::uint32_t level() const noexcept { return level_.load(std::memory_order_relaxed); }
    const std::string& path() const noexcept { return settings_.path; }
    const std::string& banner() const noexcept { return settings_.banner; }

    /// A number that no other log of the process has or had.
    std::uint64_t number() const noexcept { return number_; }

  private:
    void append(const QN::log::LineQueue::Record& record) noexcept;
    void startWriter() noexcept;

    // The writer's.
    void write();
    void writeAll();
    void write(const QN::log::LineQueue::Record& record) noexcept;
    void writeLine(std::uint32_t level, platform::WallClock::time_point time,
                   std::string_view text) noexcept;
    void reportDropped();

    const Settings settings_;
    const std::uint64_t number_;
    std::atomic<std::uint32_t> level_{qnlog_user}; // written by the writer only
    QN::log::LineQueue lines_;
    QN::async::Signal hurry_;
    std::atomic<bool> isClosing_{false};

    // The writer's.
    QN::log::LineComposer composer_;
    QN::log::LogFile file_;

    QN::async::queue queue_;
};
