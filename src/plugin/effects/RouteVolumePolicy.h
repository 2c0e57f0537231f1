#pragma once

#include "platform/base/MonotonicClock.h"
#include "plugin/effects/StreamSetting.h"
#include "plugin/volume/StreamVolume.h"

#include <deque>
#include <optional>
#include <string>
#include <vector>

/// Decides what to write into a setting of the session manager that others write too, and what
/// their changes mean. The setting itself may come and go; for a while after it came, what it holds
/// is what the session manager remembered, and nobody's will. Nothing is written before the
/// application has asked for something. Plain data, any thread.
class RouteVolumePolicy {
  public:
    /// How long a setting that appeared may still be filled by the session manager.
    static constexpr std::chrono::milliseconds settling{300};

    /// How long a write may take to come back.
    static constexpr std::chrono::seconds longestEcho{2};

    using TimePoint = platform::MonotonicClock::time_point;

    /// The setting is there. settled() should be called after `settling`.
    void appeared();
    void gone();

    /// The application has asked for something, so that `all` is wanted now. Answers the value to
    /// write, if any.
    [[nodiscard]] std::optional<std::string> asked(const WantedVolume& all, TimePoint now);

    /// A stream was set elsewhere, so that `all` is wanted now. Answers the value to write, if any:
    /// what nobody ever asked us to set is left to the others.
    [[nodiscard]] std::optional<std::string> changedBeside(const WantedVolume& all, TimePoint now);

    /// The time for settling is over, and `all` is wanted. Answers the value to write, if any.
    [[nodiscard]] std::optional<std::string> settled(const WantedVolume& all, TimePoint now);

    /// The setting has this value now; none when it was removed. Answers what somebody else has
    /// changed.
    WantedVolume told(const std::optional<std::string>& value, TimePoint now);

  private:
    enum class State { absent, settling, settled };
    struct Write {
        StreamSetting setting;
        TimePoint time;
    };

    void remember(const std::optional<StreamSetting>& setting);
    void forgetLostWrites(TimePoint now);
    bool isEcho(const StreamSetting& setting);
    StreamSetting settingFor(const WantedVolume& all) const;
    std::optional<std::string> write(const WantedVolume& all, TimePoint now);

    State state_ = State::absent;
    std::optional<StreamSetting> known_;
    std::vector<float> balance_; // the last volumes that were not all zero
    std::deque<Write> writes_;   // that have not come back
    bool overtaken_ = false;     // by another's change since the last write
    bool wasAsked_ = false;
};
