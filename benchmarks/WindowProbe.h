#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>
#include <xcb/damage.h>

namespace bench {

/// What a window shows: red, green and blue in the low 24 bits of each pixel.
class Picture {
  public:
    /// `pixels` are the rows from top to bottom.
    Picture(std::vector<std::uint32_t> pixels, std::size_t width)
        : pixels_(std::move(pixels)), width_(width) {}

    std::size_t height() const noexcept { return width_ == 0 ? 0 : pixels_.size() / width_; }
    std::span<const std::uint32_t> row(std::size_t y) const {
        return std::span(pixels_).subspan(y * width_, width_);
    }

    bool isOneColour() const;

    bool operator==(const Picture&) const = default;

  private:
    std::vector<std::uint32_t> pixels_;
    std::size_t width_;
};

/// Another client of the X display that DISPLAY names, which sees windows appear and looks at what
/// is drawn in them. It works without a window manager only. Throws std::runtime_error when the
/// display cannot be used. One thread at a time.
class WindowProbe {
  public:
    using Clock = std::chrono::steady_clock;

    WindowProbe();

    /// Forgets what has happened so far; the next window is the one that counts.
    void reset();

    /// Waits until the first top-level window mapped since reset() holds a picture that `shows`
    /// accepts. A picture is taken when the window is mapped and whenever the server reports that
    /// something was drawn in it; the answer is when that report came, or nothing after `bound`.
    std::optional<Clock::time_point> waitFor(const std::function<bool(const Picture&)>& shows,
                                             Clock::duration bound);

    /// Puts that window into the corner and gives it another size; it need not keep it. Of one that
    /// is not wholly on the screen no picture can be taken.
    void resize(std::uint32_t width, std::uint32_t height);

    /// Minimises that window, as a window manager does.
    void iconify();

  private:
    void awaitEvent(Clock::duration bound);
    bool take(const xcb_generic_event_t& event);
    Picture picture() const;

    struct Disconnect {
        void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
    };
    const std::unique_ptr<xcb_connection_t, Disconnect> connection_;
    const xcb_window_t root_;
    const std::uint8_t damageEvent_;
    xcb_window_t window_ = XCB_NONE;
    xcb_damage_damage_t damage_ = XCB_NONE;
};

} // namespace bench
