#pragma once

#include "framework/async/Signal.h"
#include "framework/async/queue.h"
#include "framework/log/LineComposer.h"
#include "framework/log/LineQueue.h"
#include "framework/log/LogFile.h"
#include "framework/log/qnlog.h"
#include "platform/base/Mutex.h"

#include "platform/base/WallClock.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

/// One open log. Its messages wait in a LineQueue for a writer, usually a task of the serial queue
/// "com.quarnel.log".
///
/// Waking a thread of the pool costs a caller more than everything else. So a writer that has
/// nothing more to do lingers for a moment: as long as messages keep coming, it writes them, and
/// callers do not touch the pool. Callers that must not depend on a free thread of the pool write
/// themselves: flush(), finish(). The order is that of the LineQueue, since every writer takes
/// `writing_` first; appending never does.
class qnlog_handle {
  public:
    struct Settings {
        std::uint32_t flags = 0; ///< the low 24 bits of qnlog_open()'s
        std::string path = {};
        std::string banner = {};
        std::string_view beginning = {}; ///< written to the file before all messages; a literal
        std::size_t bound = 32U << 20;   ///< bytes of messages that may wait
        std::chrono::nanoseconds lingering = std::chrono::milliseconds(2);
    };

    /// Throws std::bad_alloc, or std::system_error when there is no thread for the pool.
    qnlog_handle(QN::log::LogFile file, Settings settings);

    /// finish(), and waits for the pool; a task of the pool uses destroyLater() instead.
    ~qnlog_handle();
    qnlog_handle(const qnlog_handle&) = delete;
    qnlog_handle& operator=(const qnlog_handle&) = delete;

    /// Whether a message of that level would be written.
    [[nodiscard]] bool wants(std::uint32_t level) const noexcept { return lines_.wants(level); }

    /// Queues `text` with the given time, unless it is empty or the log is no longer usable (in a
    /// child made by fork).
    void append(std::uint32_t level, platform::WallClock::time_point time,
                std::string_view text) noexcept;

    void setLevel(std::uint32_t level) noexcept;

    /// Writes all appended messages on the calling thread, and waits for a running writer.
    void flush() noexcept;

    /// flush(), and closes the file. Nothing may be appended any more.
    void finish() noexcept;

    /// Destroys a finished log, made with new, without waiting for the pool.
    static void destroyLater(qnlog_handle* log) noexcept;

    [[nodiscard]] std::uint32_t level() const noexcept {
        return level_.load(std::memory_order_relaxed);
    }
    [[nodiscard]] const std::string& path() const noexcept { return settings_.path; }
    [[nodiscard]] const std::string& banner() const noexcept { return settings_.banner; }

    /// A number that no other log of the process has or had.
    [[nodiscard]] std::uint64_t number() const noexcept { return number_; }

  private:
    void append(const QN::log::LineQueue::Record& record) noexcept;
    void startWriter() noexcept;
    void work();

    void writeWaiting() noexcept REQUIRES(writing_);
    void write(const QN::log::LineQueue::Chunk& chunk) noexcept REQUIRES(writing_);
    void write(const QN::log::LineQueue::Record& record) noexcept REQUIRES(writing_);
    void writeLine(std::uint32_t level, platform::WallClock::time_point time,
                   std::string_view text) noexcept REQUIRES(writing_);
    void writeGap(const QN::log::LineQueue::Record& gap) noexcept REQUIRES(writing_);

    const Settings settings_;
    const std::uint64_t number_;
    const std::shared_ptr<bool> exists_ = std::make_shared<bool>(true); // in tasks of queue_ only
    std::atomic<std::uint32_t> level_{qnlog_user}; // written with writing_ held
    QN::log::LineQueue lines_;
    QN::async::Signal hurry_;
    std::atomic<bool> isClosing_{false};

    platform::Mutex writing_;
    QN::log::LineComposer composer_ GUARDED_BY(writing_);
    QN::log::LogFile file_ GUARDED_BY(writing_);
    std::string_view owedBeginning_ GUARDED_BY(writing_);

    QN::async::queue queue_;
};
