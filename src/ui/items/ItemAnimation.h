#pragma once

#include <chrono>

/// Decides whether items move to their positions with an animation.
struct ItemAnimation {
    std::chrono::duration<double> sinceStart{}; ///< of the controller
    bool isInLiveResize = false;
    bool isEnabled = true; ///< in the desktop's settings

    /// The animation's duration; zero for none.
    [[nodiscard]] std::chrono::milliseconds duration() const noexcept;
};
