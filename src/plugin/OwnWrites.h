#pragma once

#include "platform/loop/MonotonicClock.h"

#include <algorithm>
#include <cstddef>
#include <deque>
#include <utility>

/// Our writes of one value that the server has yet to tell about. It tells of a change whoever made
/// it, so this is how others' changes are known. The server may leave out a value that was soon
/// followed by another. Any thread, one at a time.
template <typename Value>
class OwnWrites {
  public:
    using TimePoint = platform::MonotonicClock::time_point;

    static constexpr std::chrono::seconds longestWay{1};
    static constexpr std::size_t most = 64;

    /// Expects the server to tell of `value`, which is written now. The oldest of too many is
    /// expected no more.
    void add(Value value, TimePoint now) {
        if (writes_.size() == most)
            writes_.pop_front();
        writes_.push_back({std::move(value), now});
    }

    /// Whether the value that the server told is one of ours, which `same` decides. Those written
    /// before it are not expected any more.
    template <typename Same>
    [[nodiscard]] bool takeEcho(const Value& told, TimePoint now, Same same) {
        dropLost(now);
        const auto ours = std::find_if(writes_.begin(), writes_.end(),
                                       [&](const Write& each) { return same(each.value, told); });
        if (ours == writes_.end())
            return false;
        writes_.erase(writes_.begin(), ours + 1);
        return true;
    }

    /// What we wrote last; null when the server has told of all.
    const Value* newest(TimePoint now) noexcept {
        dropLost(now);
        return writes_.empty() ? nullptr : &writes_.back().value;
    }

    /// Expects nothing any more: what the server tells next is somebody else's.
    void clear() noexcept { writes_.clear(); }

  private:
    struct Write {
        Value value;
        TimePoint written;
    };

    void dropLost(TimePoint now) noexcept {
        while (!writes_.empty() && now - writes_.front().written >= longestWay)
            writes_.pop_front();
    }

    std::deque<Write> writes_; // the oldest first
};
