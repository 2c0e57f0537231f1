#include "helper/ScrollNotches.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <iterator>

namespace {

constexpr int notch = 120;
constexpr int mostNotches = 20;
constexpr std::chrono::milliseconds memory{500};

struct Host {
    std::string_view process;
    ScrollDialect dialect;
};

constexpr std::array<Host, 6> hosts{{{"gnome-shell", ScrollDialect::steps},
                                     {"waybar", ScrollDialect::steps},
                                     {"kded5", ScrollDialect::angle},
                                     {"kded6", ScrollDialect::angle},
                                     {"plasmashell", ScrollDialect::angle},
                                     {"lxqt-panel", ScrollDialect::angle}}};

/// Nobody turns so many notches at once, and no touchpad that counts angles moves in such strides.
constexpr int leastAngle = 15;

bool isAngle(int delta, ScrollDialect dialect) noexcept {
    return dialect == ScrollDialect::angle ||
           (dialect == ScrollDialect::unknown && std::abs(delta) >= leastAngle);
}

} // namespace

ScrollDialect scrollDialectOf(std::string_view process) noexcept {
    const auto* const found = std::ranges::find(hosts, process, &Host::process);
    return found != std::end(hosts) ? found->dialect : ScrollDialect::unknown;
}

int ScrollNotches::turned(int delta, ScrollDialect dialect) noexcept {
    const int bounded = std::clamp(delta, -mostNotches * notch, mostNotches * notch);
    const int way = isAngle(bounded, dialect)
                        ? bounded
                        : -std::clamp(bounded, -mostNotches, mostNotches) * notch;
    const auto now = platform::MonotonicClock::now();
    if (now - last_ > memory || (way > 0) != (rest_ > 0))
        rest_ = 0;
    last_ = now;
    rest_ += way;
    const int whole = std::clamp(rest_ / notch, -mostNotches, mostNotches);
    rest_ %= notch;
    return whole;
}
