#pragma once

#include "platform/base/MonotonicClock.h"

#include <cstdint>
#include <string_view>

/// How a host of tray icons counts the turns of a wheel.
enum class ScrollDialect : std::uint8_t {
    angle, ///< 120 a notch, or parts of it; positive is up
    steps, ///< about 1 a notch; positive is down
    unknown,
};

/// The dialect of the program that owns the watcher's name, by its kernel name.
[[nodiscard]] ScrollDialect scrollDialectOf(std::string_view process) noexcept;

/// Collects what hosts tell of the wheel until whole notches have come together. What is left over
/// is forgotten after half a second, and when the direction turns.
class ScrollNotches {
  public:
    /// The whole notches that `delta` completes; positive is up. At most 20 either way.
    int turned(int delta, ScrollDialect dialect) noexcept;

  private:
    int rest_ = 0; // of a notch, in 120ths
    platform::MonotonicClock::time_point last_{};
};
