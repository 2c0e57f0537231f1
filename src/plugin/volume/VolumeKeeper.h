#pragma once

#include "plugin/volume/OwnWrites.h"
#include "plugin/volume/StreamVolume.h"
#include "plugin/volume/VolumeRamp.h"

#include <optional>
#include <utility>
#include <vector>

/// Keeps one stream at the volume that is wanted for it: decides what is written, and whose will a
/// change is that the server tells of. Owns no clock, timer or connection; what an operation
/// answers is to be written at once, in order. Any thread, one at a time.
///
/// A new stream is held at what is wanted for a while, see VolumeHold. After that, a change that is
/// not our own is a person's will. A stream that was already heard when we came is only ever made
/// quieter by what is remembered; where it is quieter by itself, it stays as it was found. Before
/// adopt() a stream is nobody's, and nothing is written.
class VolumeKeeper {
  public:
    using TimePoint = platform::MonotonicClock::time_point;

    explicit VolumeKeeper(TimePoint streamAppeared) noexcept : hold_(streamAppeared) {}

    /// The stream is heard already, and it is not our coming that made it start. To be told before
    /// anything else.
    void heardAlready() noexcept { heardAlready_ = true; }

    /// Forgets what was wanted and wants `all`, which is what its program remembers.
    [[nodiscard]] VolumeWrite adopt(const WantedVolume& all, TimePoint now);

    /// Wants `change` too, which somebody asks for now. It need not be in effect at once: see
    /// isRamping().
    [[nodiscard]] VolumeWrite want(const WantedVolume& change, TimePoint now);

    /// Holds what is wanted as if the stream were new: somebody may set it back now who does not
    /// know of it.
    void uphold(TimePoint now) noexcept;

    /// Once what was asked for is written, the stream is up to others, until the next adopt():
    /// nothing is upheld when it might be new or gets another format.
    void letGo() noexcept { letGo_ = true; }

    /// Whether the stream is heard. What is not heard needs no ramp.
    [[nodiscard]] VolumeWrite setRunning(bool running);

    /// The server told what is in effect.
    [[nodiscard]] VolumeWrite propsArrived(const StreamProps& props, TimePoint now);

    /// Whether step() is to be called at nextStep().
    bool isRamping() const noexcept { return ramp_.isRunning(); }
    TimePoint nextStep() const noexcept { return ramp_.due(); }
    [[nodiscard]] VolumeWrite step(TimePoint now);

    /// Ends a ramp with its last value.
    [[nodiscard]] VolumeWrite finish();

    /// What the server told last; nothing before the first time.
    const std::optional<StreamProps>& props() const noexcept { return props_; }

    const WantedVolume& wanted() const noexcept { return wanted_; }

    /// What others have changed since the last call.
    WantedVolume takeChangesElsewhere() { return std::exchange(elsewhere_, {}); }

    /// What a stream that was already heard turned out to have and keeps. That is no change: nobody
    /// knows when it was made.
    WantedVolume takeFound() { return std::exchange(found_, {}); }

  private:
    VolumeWrite apply(TimePoint now);
    VolumeWrite applyQuietly(TimePoint now);
    VolumeWrite bringAbout(const WantedVolume& change, TimePoint now);
    VolumeWrite changedElsewhere(const StreamProps& before);
    void addUntouched(WantedVolume& will) const;
    bool needsRamp(const WantedVolume& change, TimePoint now) const;
    VolumeWrite written(VolumeWrite write);
    std::vector<float> volumesAt(float gain) const;
    float newestGain() const;
    bool isMuted() const;

    VolumeHold hold_;
    bool heardAlready_ = false;
    bool adopted_ = false;
    bool letGo_ = true;
    bool running_ = false;
    WantedVolume wanted_;
    WantedVolume elsewhere_;
    WantedVolume found_;
    std::optional<StreamProps> props_;
    std::vector<float> balance_; // the last channel volumes that were not all zero
    VolumeRamp ramp_;
    OwnWrites<std::vector<float>> ownVolumes_;
    OwnWrites<bool> ownMutes_;
};
