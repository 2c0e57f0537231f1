#pragma once

#include "platform/base/MonotonicClock.h"

#include <optional>

/// Thins out a line that a stranger can cause as often as he likes: one a second. One thread at a
/// time.
class MVCommLogLimit {
  public:
    /// Whether the line may be written now; it counts as written then.
    bool allowsLine() noexcept {
        const auto now = platform::MonotonicClock::now();
        if (last_ && now - *last_ < std::chrono::seconds(1))
            return false;
        last_ = now;
        return true;
    }

  private:
    std::optional<platform::MonotonicClock::time_point> last_;
};
