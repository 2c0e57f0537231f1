#pragma once

#include "platform/loop/Timer.h"
#include "platform/sound/SampleOutput.h"

#include <array>
#include <functional>
#include <memory>

namespace platform {
class RunLoop;
}

/// Plays one of sixteen short sounds at a given volume, so that a person can judge it. One at a
/// time: a new one cuts the one before short. What is needed for sound is loaded with the first
/// one; where it cannot be had there is silence. Main thread only.
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

    /// On the thread's run loop, with the recording of the bundle; made on first use, never
    /// destroyed.
    static TNBeeper& sharedBeeper();

    TNBeeper(platform::RunLoop& loop, MakeOutput makeOutput);

    /// At `volume`, of the same scale as the sliders: 0 to 1, its cube is the gain. Numbers beyond
    /// count as the nearest of these, no number as 0.
    void beepAtVolume(float volume);

  private:
    void stop();

    const MakeOutput makeOutput_;
    bool hasOutput_ = false; // or has tried to
    std::unique_ptr<platform::SampleOutput> sound_;
    platform::Timer end_;
};
