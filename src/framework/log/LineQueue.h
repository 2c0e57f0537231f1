#pragma once

#include "platform/base/Mutex.h"
#include "platform/base/WallClock.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <optional>
#include <string_view>

namespace QN::log {

/// The queue of messages to be written. Any thread may append; one writer at a time takes all of
/// them. Texts are copied one after the other into large chunks of memory, so that appending costs
/// a copy and no allocation.
///
/// Memory is bounded. Records that do not fit are dropped and replaced by a gap.
class LineQueue {
  public:
    enum class Kind : std::uint32_t { message, levelChange, gap };

    struct Record {
        Kind kind;
        std::uint32_t level; ///< of a message; else the level in effect from here on
        platform::WallClock::time_point time; ///< of a gap: of the first record dropped
        std::string_view text;
        std::uint64_t dropped = 0; ///< of a gap: how many records
    };

    /// What the appending thread must do about the writer.
    enum class Demand {
        none,  ///< nothing: it is working, or will check soon
        start, ///< start one
        hurry, ///< wake it: it lingers, but should write now
    };

    /// Records, to be read from first to last.
    class Chunk {
      public:
        explicit Chunk(std::size_t capacity);

        /// Whether a record with a text of this size fits, and a gap before it.
        [[nodiscard]] bool fits(std::size_t textSize) const noexcept;
        void append(const Record& record) noexcept;

        /// Reads the record at `offset` and advances it; false at the end.
        [[nodiscard]] bool next(std::size_t& offset, Record& record) const noexcept;

        [[nodiscard]] std::size_t capacity() const noexcept { return capacity_; }
        void clear() noexcept { used_ = 0; }

        static std::size_t capacityFor(std::size_t textSize) noexcept;

      private:
        std::unique_ptr<std::byte[]> bytes_;
        std::size_t capacity_;
        std::size_t used_ = 0;
    };
    using Chunks = std::list<Chunk>;

    struct Content {
        Chunks chunks;
        std::optional<Record> gap; ///< behind the last chunk
    };

    /// All chunks together, waiting and being written, take about `bound` bytes at most. `level` is
    /// the initial log level.
    LineQueue(std::size_t bound, std::uint32_t level) : bound_(bound), level_(level) {}

    /// Whether a message of that level, appended now, would be written.
    [[nodiscard]] bool wants(std::uint32_t level) const noexcept;

    /// Appends a message or a level change. A dropped level change takes effect at its gap.
    /// `isUrgent` asks a lingering writer to hurry.
    Demand append(const Record& record, bool isUrgent) noexcept;

    /// Takes all records.
    Content take() noexcept;

    /// Returns a chunk that has been written.
    void giveBack(Chunks chunk) noexcept;

    /// For a writer that has written everything. False if more records have come; otherwise it now
    /// counts as lingering.
    [[nodiscard]] bool beginLingering() noexcept;

    /// For a writer that has lingered. True if nothing has come; there is no writer then.
    [[nodiscard]] bool endLingering() noexcept;

    /// Ends the lingering of the writer. Returns whether there is a lingering one, which now counts
    /// as working.
    [[nodiscard]] bool hurry() noexcept;

    /// Call this if the writer could not be started: the next append() requests it again.
    void writerFailed() noexcept;

  private:
    enum class Writer { none, working, lingering };

    bool makeRoom(std::size_t textSize, Chunks& fresh, bool& isUrgent) noexcept REQUIRES(mutex_);
    bool hasRoom(std::size_t textSize) noexcept REQUIRES(mutex_);
    Demand drop(const Record& record) noexcept REQUIRES(mutex_);
    bool isEmpty() const noexcept REQUIRES(mutex_) { return waiting_.empty() && dropped_ == 0; }
    Record takeGap() noexcept REQUIRES(mutex_);
    Demand demandOf(bool isUrgent) noexcept REQUIRES(mutex_);

    const std::size_t bound_;
    std::atomic<std::uint32_t> level_; // after all queued changes; written under mutex_

    platform::Mutex mutex_;
    Chunks waiting_ GUARDED_BY(mutex_); // records go into the last one
    Chunks spare_ GUARDED_BY(mutex_);   // one at most, to save allocations
    std::size_t held_ GUARDED_BY(mutex_) = 0;
    std::uint64_t dropped_ GUARDED_BY(mutex_) = 0; // after the last record
    platform::WallClock::time_point firstDropped_ GUARDED_BY(mutex_);
    Writer writer_ GUARDED_BY(mutex_) = Writer::none;
};

} // namespace QN::log
