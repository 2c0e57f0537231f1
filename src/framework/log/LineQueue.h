#pragma once

#include "platform/loop/WallClock.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>

namespace QN::log {

/// The messages that wait to be written, in the order in which they were left. Callers of any
/// thread append, one writer at a time takes all there is. Texts are copied one behind the other
/// into large chunks of memory, so that leaving one costs a copy and no allocation.
class LineQueue {
  public:
    struct Record {
        bool isLevelChange; ///< from here on messages up to `level` are written
        std::uint32_t level;
        platform::WallClock::time_point time;
        std::string_view text;
    };

    /// What the appending thread has to do for the writer.
    enum class Demand {
        none,  ///< it is at work, or comes by soon
        start, ///< nobody is writing
        hurry, ///< it lingers, but should not
    };

    /// Records, to be read from first to last.
    class Chunk {
      public:
        explicit Chunk(std::size_t capacity);

        bool fits(std::size_t textSize) const noexcept;
        void append(const Record& record) noexcept;

        /// The record at an offset, which moves on to the next; false at the end.
        bool next(std::size_t& offset, Record& record) const noexcept;

        std::size_t capacity() const noexcept { return capacity_; }
        bool isEmpty() const noexcept { return used_ == 0; }
        void clear() noexcept { used_ = 0; }

        static std::size_t capacityFor(std::size_t textSize) noexcept;

      private:
        std::unique_ptr<std::byte[]> bytes_;
        std::size_t capacity_;
        std::size_t used_ = 0;
    };
    using Chunks = std::list<Chunk>;

    /// All chunks together, waiting and being written, take `bound` bytes or hardly more. `level`
    /// is the one that messages are measured by until the first change.
    LineQueue(std::size_t bound, std::uint32_t level) : bound_(bound), level_(level) {}

    /// Whether a message of that level, appended now, would be written.
    bool wants(std::uint32_t level) const noexcept;

    /// A record that finds no room is counted and dropped; of a level change the level stays, see
    /// takeLostLevel(). `isUrgent` asks a lingering writer to hurry.
    Demand append(const Record& record, bool isUrgent) noexcept;

    /// All there is.
    Chunks take() noexcept;

    /// Returns a chunk that has been written.
    void giveBack(Chunks chunk) noexcept;

    /// For a writer that has written. False when more has come; else it counts as lingering.
    bool beginLingering() noexcept;

    /// For a writer that has lingered. True, and nobody is writing, when nothing has come.
    bool endLingering() noexcept;

    /// Whether a writer lingers that is not to; it counts as at work from now on.
    bool hurry() noexcept;

    /// When the writer could not be started: the next append() asks for it again.
    void writerFailed() noexcept;

    /// Records dropped since the last call.
    std::uint64_t takeDropped() noexcept;

    /// The level of the last change that was dropped since the last call.
    std::optional<std::uint32_t> takeLostLevel() noexcept;

  private:
    enum class Writer { none, working, lingering };

    bool hasRoom(std::size_t textSize) noexcept;
    Demand drop(const Record& record) noexcept;
    Demand demandOf(bool isUrgent) noexcept;

    const std::size_t bound_;
    std::atomic<std::uint32_t> level_; // after all changes in the queue; written under mutex_

    std::mutex mutex_;
    // Guarded by mutex_.
    Chunks waiting_; // records go into the last one
    Chunks spare_;   // one at most, to save allocations
    std::size_t held_ = 0;
    std::uint64_t dropped_ = 0;
    std::optional<std::uint32_t> lostLevel_;
    Writer writer_ = Writer::none;
};

} // namespace QN::log
