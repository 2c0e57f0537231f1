#pragma once

#include <algorithm>
#include <chrono>

/// Exponential backoff: each pause is twice the previous one, from a quarter of a second up to five
/// seconds.
class Backoff {
  public:
    static constexpr std::chrono::milliseconds shortest{250};
    static constexpr std::chrono::milliseconds longest{5000};

    std::chrono::milliseconds next() noexcept {
        const auto pause = pause_;
        pause_ = std::min(2 * pause_, longest);
        return pause;
    }

    void reset() noexcept { pause_ = shortest; }

  private:
    std::chrono::milliseconds pause_ = shortest;
};
