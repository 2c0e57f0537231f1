#pragma once

#include "platform/loop/Timer.h"
#include "platform/sound/SampleOutput.h"

#include <array>
#include <functional>
#include <memory>

namespace platform {
class RunLoop;
}

/// Plays one of sixteen short sounds at a given volume, as a sample. A new sound replaces the
/// previous one. The sound module is loaded on first use; without it there is silence. Main thread
/// only.
class TNBeeper {
  public:
    using Seconds = platform::SampleOutput::Seconds;
    using MakeOutput = std::function<std::unique_ptr<platform::SampleOutput>()>;

    /// A piece of the recording.
    struct Range {
        Seconds start;
        Seconds duration;
    };
    static const std::array<Range, 16> ranges;

    /// On the thread's run loop, with the recording of the bundle; created on first use, never
    /// destroyed.
    static TNBeeper& sharedBeeper();

    TNBeeper(platform::RunLoop& loop, MakeOutput makeOutput);

    /// Plays at `volume`, on the same scale as the sliders: 0 to 1, its cube is the gain. Other
    /// numbers are clamped, NaN counts as 0.
    void beepAtVolume(float volume);

  private:
    void stop();

    const MakeOutput makeOutput_;
    bool hasOutput_ = false; // or loading it failed
    std::unique_ptr<platform::SampleOutput> sound_;
    platform::Timer end_;
};
