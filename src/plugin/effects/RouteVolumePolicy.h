#pragma once

#include "platform/base/MonotonicClock.h"
#include "plugin/effects/StreamSetting.h"
#include "plugin/volume/StreamVolume.h"

#include <deque>
#include <optional>
#include <string>
#include <vector>

/// Decides what to write into a setting of the session manager that others write too, and how to
/// interpret their changes. The setting may appear and disappear; for a while after it appeared,
/// its value is the session manager's stored one, not a user's change. Nothing is written before
/// the application has sent a command. Plain data, any thread.
class RouteVolumePolicy {
  public:
    /// How long the session manager may still fill a setting after it appeared.
    static constexpr std::chrono::milliseconds settling{300};

    /// The maximum time until a write is echoed.
    static constexpr std::chrono::seconds longestEcho{2};

    using TimePoint = platform::MonotonicClock::time_point;

    /// The setting has appeared. Call settled() after `settling`.
    void appeared();
    void gone();

    /// The application has sent a command, so that `all` is wanted now. Returns the value to write,
    /// if any.
    [[nodiscard]] std::optional<std::string> asked(const WantedVolume& all, TimePoint now);

    /// A stream was changed in another mixer, so that `all` is wanted now. Returns the value to
    /// write, if any: nothing before the first command.
    [[nodiscard]] std::optional<std::string> changedBeside(const WantedVolume& all, TimePoint now);

    /// The time for settling is over, and `all` is wanted. Returns the value to write, if any.
    [[nodiscard]] std::optional<std::string> settled(const WantedVolume& all, TimePoint now);

    /// The setting has this value now; none if it was removed. Returns the changes made by others.
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
    std::deque<Write> writes_;   // that have not been echoed
    bool overtaken_ = false;     // by someone else's change since the last write
    bool wasAsked_ = false;
};
