#pragma once

#include "platform/base/WallClock.h"

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
///
/// Memory has a bound. Records that find no room are dropped; a gap stands in their place.
class LineQueue {
  public:
    enum class Kind : std::uint32_t { message, levelChange, gap };

    struct Record {
        Kind kind;
        std::uint32_t level; ///< unless it is a message, the one that holds from here on
        platform::WallClock::time_point time; ///< of a gap: of the first record dropped
        std::string_view text;
        std::uint64_t dropped = 0; ///< of a gap: how many records
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

        /// Whether there is room for a record with such a text and for a gap before it.
        bool fits(std::size_t textSize) const noexcept;
        void append(const Record& record) noexcept;

        /// The record at an offset, which moves on to the next; false at the end.
        bool next(std::size_t& offset, Record& record) const noexcept;

        std::size_t capacity() const noexcept { return capacity_; }
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

    /// All chunks together, waiting and being written, take `bound` bytes or hardly more. `level`
    /// is the one that messages are measured by until the first change.
    LineQueue(std::size_t bound, std::uint32_t level) : bound_(bound), level_(level) {}

    /// Whether a message of that level, appended now, would be written.
    bool wants(std::uint32_t level) const noexcept;

    /// A message or a level change. The level of one that is dropped holds from its gap on.
    /// `isUrgent` asks a lingering writer to hurry.
    Demand append(const Record& record, bool isUrgent) noexcept;

    /// All there is.
    Content take() noexcept;

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

  private:
    enum class Writer { none, working, lingering };

    bool hasRoom(std::size_t textSize) noexcept;
    Demand drop(const Record& record) noexcept;
    bool isEmpty() const noexcept { return waiting_.empty() && dropped_ == 0; }
    Record takeGap() noexcept;
    Demand demandOf(bool isUrgent) noexcept;

    const std::size_t bound_;
    std::atomic<std::uint32_t> level_; // after all changes in the queue; written under mutex_

    std::mutex mutex_;
    // Guarded by mutex_.
    Chunks waiting_; // records go into the last one
    Chunks spare_;   // one at most, to save allocations
    std::size_t held_ = 0;
    std::uint64_t dropped_ = 0; // behind the last record
    platform::WallClock::time_point firstDropped_;
    Writer writer_ = Writer::none;
};

} // namespace QN::log
