#pragma once

#include "platform/base/MonotonicClock.h"

#include <optional>

/// Limits a log line that other programs can trigger without limit: one a second. One thread at a
/// time.
class MVCommLogLimit {
  public:
    /// Whether the line may be written now. If so, counts it as written.
    [[nodiscard]] bool allowsLine() noexcept {
        const auto now = platform::MonotonicClock::now();
        if (last_ && now - *last_ < std::chrono::seconds(1))
            return false;
        last_ = now;
        return true;
    }

  private:
    std::optional<platform::MonotonicClock::time_point> last_;
};
