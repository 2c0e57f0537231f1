#pragma once

#include <chrono>

/// When items are led to their places rather than put there.
struct ItemAnimation {
    std::chrono::duration<double> sinceStart{}; ///< of the controller
    bool isInLiveResize = false;
    bool isEnabled = true; ///< by the desktop's settings

    /// For how long; zero for at once.
    std::chrono::milliseconds duration() const noexcept;
};
