#pragma once

#include "plugin/volume/StreamVolume.h"

#include <chrono>

/// The kind of a stream's program, which affects who may change its volume.
enum class StreamKind {
    player,       ///< an ordinary player
    page,         ///< a browser or a web runtime, which applies the volumes of its pages
    notification, ///< a short sound, whose volume the desktop's sliders set through the session
                  ///< manager
};

/// Guesses who made a foreign change of a stream's volume. The server does not say who wrote it, so
/// the guess uses the kind of program and the time of the change:
///
/// 1. The session manager restores a volume of its own when a stream appears, and only then makes
///    the stream's link. Until the link is there, and for VolumeHold::duration at most, a change is
///    the session manager's; so it is after uphold().
/// 2. A change of a page's stream is the page's.
/// 3. A change within `start` is the program's initial volume.
/// 4. Any other change is the user's.
///
/// Owns no clock. Any thread, one at a time.
class ChangeAuthor {
  public:
    using TimePoint = platform::MonotonicClock::time_point;
    enum class Author { sessionManager, program, person };

    static constexpr std::chrono::seconds start{2};

    explicit ChangeAuthor(TimePoint streamAppeared) noexcept
        : hold_(streamAppeared), startEnds_(streamAppeared + start) {}

    void setKind(StreamKind kind) noexcept { kind_ = kind; }
    [[nodiscard]] StreamKind kind() const noexcept { return kind_; }

    /// The stream existed before us: it is not at its start.
    void found() noexcept { startEnds_ = TimePoint::min(); }

    /// The stream has a link that it can play through.
    void linked() noexcept { linked_ = true; }

    /// A session manager may restore a volume again.
    void uphold(TimePoint now) noexcept;

    [[nodiscard]] Author of(TimePoint now) const noexcept;

    /// Whether the hold that began with the stream, or with uphold(), is over.
    [[nodiscard]] bool isHoldOver(TimePoint now) const noexcept { return hold_.isOver(now); }

    /// Whether a change of the session manager may be overwritten; counts as one write when it may.
    [[nodiscard]] bool takeWrite(TimePoint now) noexcept { return hold_.takeWrite(now); }

  private:
    StreamKind kind_ = StreamKind::player;
    VolumeHold hold_;
    TimePoint startEnds_;
    bool linked_ = false;
};
