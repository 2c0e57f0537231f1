#include "framework/log/LineQueue.h"

#include "framework/log/qnlog.h"
#include "platform/base/Mutex.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace QN::log {

namespace {

constexpr std::size_t usualCapacity = 65536;

struct Header {
    std::int64_t time;
    std::uint32_t level;
    LineQueue::Kind kind;
    std::uint64_t size; ///< of the text; of a gap, which has none, the number of records
};

} // namespace

LineQueue::Chunk::Chunk(std::size_t capacity)
    : bytes_(std::make_unique_for_overwrite<std::byte[]>(capacity)), capacity_(capacity) {}

std::size_t LineQueue::Chunk::capacityFor(std::size_t textSize) noexcept {
    return std::max(usualCapacity, 2 * sizeof(Header) + textSize);
}

bool LineQueue::Chunk::fits(std::size_t textSize) const noexcept {
    return capacity_ - used_ >= 2 * sizeof(Header) + textSize;
}

void LineQueue::Chunk::append(const Record& record) noexcept {
    const Header header{record.time.time_since_epoch().count(), record.level, record.kind,
                        record.kind == Kind::gap ? record.dropped : record.text.size()};
    std::memcpy(&bytes_[used_], &header, sizeof header);
    used_ += sizeof header;
    if (!record.text.empty())
        std::memcpy(&bytes_[used_], record.text.data(), record.text.size());
    used_ += record.text.size();
}

bool LineQueue::Chunk::next(std::size_t& offset, Record& record) const noexcept {
    if (offset >= used_)
        return false;
    Header header{};
    std::memcpy(&header, &bytes_[offset], sizeof header);
    offset += sizeof header;
    record = {header.kind,
              header.level,
              platform::WallClock::time_point(std::chrono::microseconds(header.time)),
              {}};
    if (record.kind == Kind::gap) {
        record.dropped = header.size;
    } else {
        record.text = {reinterpret_cast<const char*>(bytes_.get()) + offset, header.size};
        offset += header.size;
    }
    return true;
}

bool LineQueue::wants(std::uint32_t level) const noexcept {
    return level <= level_.load(std::memory_order_relaxed) || level == qnlog_always;
}

LineQueue::Demand LineQueue::append(const Record& record, bool isUrgent) noexcept {
    Chunks fresh; // made, and destroyed if not needed, without the lock
    const platform::ScopedLock lock(mutex_);
    if (!makeRoom(record.text.size(), fresh, isUrgent))
        return drop(record);
    if (dropped_ != 0)
        waiting_.back().append(takeGap());
    waiting_.back().append(record);
    if (record.kind == Kind::levelChange)
        level_.store(record.level, std::memory_order_relaxed);
    return demandOf(isUrgent);
}

/// False if there is none within the bound, or no memory. Others may append meanwhile.
bool LineQueue::makeRoom(std::size_t textSize, Chunks& fresh, bool& isUrgent) noexcept {
    const std::size_t capacity = Chunk::capacityFor(textSize);
    while (!hasRoom(textSize)) {
        if (held_ + capacity > bound_)
            return false;
        if (!fresh.empty()) {
            held_ += capacity;
            waiting_.splice(waiting_.end(), fresh);
            continue;
        }
        const platform::ScopedUnlock unlocked(mutex_);
        try {
            fresh.emplace_back(capacity);
        } catch (const std::bad_alloc&) {
            return false;
        }
        isUrgent = true; // so much has come that it should not wait
    }
    return true;
}

LineQueue::Demand LineQueue::drop(const Record& record) noexcept {
    if (dropped_++ == 0)
        firstDropped_ = record.time;
    if (record.kind == Kind::levelChange)
        level_.store(record.level, std::memory_order_relaxed);
    return demandOf(true); // there is little room, or none
}

LineQueue::Record LineQueue::takeGap() noexcept {
    return {Kind::gap, level_, firstDropped_, {}, std::exchange(dropped_, 0)};
}

bool LineQueue::hasRoom(std::size_t textSize) noexcept {
    if (!waiting_.empty() && waiting_.back().fits(textSize))
        return true;
    if (spare_.empty() || !spare_.front().fits(textSize))
        return false;
    held_ += spare_.front().capacity();
    waiting_.splice(waiting_.end(), spare_);
    return true;
}

LineQueue::Demand LineQueue::demandOf(bool isUrgent) noexcept {
    if (writer_ == Writer::working || (writer_ == Writer::lingering && !isUrgent))
        return Demand::none;
    return std::exchange(writer_, Writer::working) == Writer::none ? Demand::start : Demand::hurry;
}

LineQueue::Content LineQueue::take() noexcept {
    const platform::ScopedLock lock(mutex_);
    Content content{std::exchange(waiting_, Chunks()), {}};
    if (dropped_ != 0)
        content.gap = takeGap();
    return content;
}

void LineQueue::giveBack(Chunks chunk) noexcept {
    const platform::ScopedLock lock(mutex_);
    held_ -= chunk.front().capacity();
    if (!spare_.empty() || chunk.front().capacity() != usualCapacity)
        return;
    chunk.front().clear();
    spare_.splice(spare_.end(), chunk);
}

bool LineQueue::beginLingering() noexcept {
    const platform::ScopedLock lock(mutex_);
    if (isEmpty())
        writer_ = Writer::lingering;
    return isEmpty();
}

bool LineQueue::endLingering() noexcept {
    const platform::ScopedLock lock(mutex_);
    writer_ = isEmpty() ? Writer::none : Writer::working;
    return writer_ == Writer::none;
}

bool LineQueue::hurry() noexcept {
    const platform::ScopedLock lock(mutex_);
    return writer_ == Writer::lingering && demandOf(true) == Demand::hurry;
}

void LineQueue::writerFailed() noexcept {
    const platform::ScopedLock lock(mutex_);
    writer_ = Writer::none;
}

} // namespace QN::log
