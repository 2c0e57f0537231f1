#include "framework/log/LineQueue.h"

#include "framework/log/qnlog.h"

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
    std::uint32_t isLevelChange;
    std::size_t textSize;
};

} // namespace

LineQueue::Chunk::Chunk(std::size_t capacity)
    : bytes_(std::make_unique_for_overwrite<std::byte[]>(capacity)), capacity_(capacity) {}

std::size_t LineQueue::Chunk::capacityFor(std::size_t textSize) noexcept {
    return std::max(usualCapacity, sizeof(Header) + textSize);
}

bool LineQueue::Chunk::fits(std::size_t textSize) const noexcept {
    return capacity_ - used_ >= sizeof(Header) + textSize;
}

void LineQueue::Chunk::append(const Record& record) noexcept {
    const Header header{record.time.time_since_epoch().count(), record.level,
                        record.isLevelChange ? 1U : 0U, record.text.size()};
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
    record = {
        header.isLevelChange != 0, header.level,
        platform::WallClock::time_point(std::chrono::microseconds(header.time)),
        std::string_view(reinterpret_cast<const char*>(bytes_.get()) + offset, header.textSize)};
    offset += header.textSize;
    return true;
}

bool LineQueue::wants(std::uint32_t level) const noexcept {
    return level <= level_.load(std::memory_order_relaxed) || level == qnlog_always;
}

LineQueue::Demand LineQueue::append(const Record& record, bool isUrgent) noexcept {
    Chunks fresh; // made, and destroyed if not needed, without the lock
    std::unique_lock lock(mutex_);
    while (!hasRoom(record.text.size())) {
        const std::size_t capacity = Chunk::capacityFor(record.text.size());
        if (held_ + capacity > bound_)
            return drop(record);
        if (!fresh.empty()) {
            held_ += capacity;
            waiting_.splice(waiting_.end(), fresh);
            continue;
        }
        lock.unlock();
        try {
            fresh.emplace_back(capacity);
        } catch (const std::bad_alloc&) {
            return Demand::none;
        }
        lock.lock();
        isUrgent = true; // so much has come that it should not wait
    }
    waiting_.back().append(record);
    if (record.isLevelChange)
        level_.store(record.level, std::memory_order_relaxed);
    return demandOf(isUrgent);
}

LineQueue::Demand LineQueue::drop(const Record& record) noexcept {
    ++dropped_;
    if (record.isLevelChange) {
        lostLevel_ = record.level;
        level_.store(record.level, std::memory_order_relaxed);
    }
    return demandOf(true); // the writer tells how much is missing
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

LineQueue::Chunks LineQueue::take() noexcept {
    const std::lock_guard lock(mutex_);
    return std::exchange(waiting_, Chunks());
}

void LineQueue::giveBack(Chunks chunk) noexcept {
    const std::lock_guard lock(mutex_);
    held_ -= chunk.front().capacity();
    if (!spare_.empty() || chunk.front().capacity() != usualCapacity)
        return;
    chunk.front().clear();
    spare_.splice(spare_.end(), chunk);
}

bool LineQueue::beginLingering() noexcept {
    const std::lock_guard lock(mutex_);
    if (waiting_.empty())
        writer_ = Writer::lingering;
    return waiting_.empty();
}

bool LineQueue::endLingering() noexcept {
    const std::lock_guard lock(mutex_);
    writer_ = waiting_.empty() ? Writer::none : Writer::working;
    return writer_ == Writer::none;
}

bool LineQueue::hurry() noexcept {
    const std::lock_guard lock(mutex_);
    return writer_ == Writer::lingering && demandOf(true) == Demand::hurry;
}

void LineQueue::writerFailed() noexcept {
    const std::lock_guard lock(mutex_);
    writer_ = Writer::none;
}

std::uint64_t LineQueue::takeDropped() noexcept {
    const std::lock_guard lock(mutex_);
    return std::exchange(dropped_, 0);
}

std::optional<std::uint32_t> LineQueue::takeLostLevel() noexcept {
    const std::lock_guard lock(mutex_);
    return std::exchange(lostLevel_, std::nullopt);
}

} // namespace QN::log
