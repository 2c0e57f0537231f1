#pragma once

#include <algorithm>
#include <cstddef>
#include <deque>
#include <utility>

/// Our writes of one value that the server has not echoed yet. The server reports all changes, so
/// this distinguishes others' changes from ours. It may skip a value that was soon followed by
/// another. Writes never time out: a stopped program, or one of many, applies its new volume late.
/// Any thread, one at a time.
template <typename Value>
class PendingWrites {
  public:
    static constexpr std::size_t most = 64;

    /// Expects an echo of `value`, which is written now. If there are too many, drops the oldest.
    void add(Value value) {
        if (writes_.size() == most)
            writes_.pop_front();
        writes_.push_back(std::move(value));
    }

    /// Whether the reported value is one of ours, compared with `same`. Drops it and those written
    /// before it.
    template <typename Same>
    [[nodiscard]] bool takeEcho(const Value& told, Same same) {
        const auto ours = std::find_if(writes_.begin(), writes_.end(),
                                       [&](const Value& each) { return same(each, told); });
        if (ours == writes_.end())
            return false;
        writes_.erase(writes_.begin(), ours + 1);
        return true;
    }

    /// Our last write; null if all have been echoed.
    [[nodiscard]] const Value* newest() const noexcept {
        return writes_.empty() ? nullptr : &writes_.back();
    }

    /// Expects no echo any more: the next report is someone else's change.
    void clear() noexcept { writes_.clear(); }

  private:
    std::deque<Value> writes_; // the oldest first
};
