#pragma once

#include <algorithm>
#include <cstddef>
#include <deque>
#include <utility>

/// Our writes of one value that the server has yet to tell about. It tells of a change whoever made
/// it, so this is how others' changes are known. The server may leave out a value that was soon
/// followed by another. There is no time after which a write counts as lost: a program that is
/// stopped, or one of a crowd, takes its new volume late. Any thread, one at a time.
template <typename Value>
class PendingWrites {
  public:
    static constexpr std::size_t most = 64;

    /// Expects the server to tell of `value`, which is written now. The oldest of too many is
    /// expected no more.
    void add(Value value) {
        if (writes_.size() == most)
            writes_.pop_front();
        writes_.push_back(std::move(value));
    }

    /// Whether the value that the server told is one of ours, which `same` decides. Those written
    /// before it are not expected any more.
    template <typename Same>
    [[nodiscard]] bool takeEcho(const Value& told, Same same) {
        const auto ours = std::find_if(writes_.begin(), writes_.end(),
                                       [&](const Value& each) { return same(each, told); });
        if (ours == writes_.end())
            return false;
        writes_.erase(writes_.begin(), ours + 1);
        return true;
    }

    /// What we wrote last; null when the server has told of all.
    const Value* newest() const noexcept { return writes_.empty() ? nullptr : &writes_.back(); }

    /// Expects nothing any more: what the server tells next is somebody else's.
    void clear() noexcept { writes_.clear(); }

  private:
    std::deque<Value> writes_; // the oldest first
};
