#pragma once

#include <chrono>

/// When items are led to their places rather than put there.
struct ItemMotion {
    std::chrono::duration<double> sinceStart{}; ///< of the controller
    bool isInLiveResize = false;
    bool isWanted = true; ///< by the desktop's settings

    /// For how long; zero for at once.
    std::chrono::milliseconds duration() const noexcept;
};
