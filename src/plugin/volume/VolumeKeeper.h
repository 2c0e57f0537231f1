#pragma once

#include "plugin/volume/ChangeAuthor.h"
#include "plugin/volume/PendingWrites.h"
#include "plugin/volume/StreamVolume.h"
#include "plugin/volume/VolumeRamp.h"

#include <optional>
#include <utility>
#include <vector>

/// Why a volume is wanted, which decides what becomes of an own volume that is only guessed.
enum class WantReason {
    command,  ///< somebody asks for it: the guess ends, unless that is wanted already
    news,     ///< a person has set it before the stream was found: the guess ends
    restored, ///< it is only remembered: what is heard gets no louder by it
};

/// Keeps one stream at the volume that is wanted for it: decides what is written, and who made each
/// change that the server reports. Owns no clock, timer or connection; what an operation
/// answers is to be written at once, in order. Any thread, one at a time.
///
/// What happens to a change that is not ours depends on its author, see ChangeAuthor. The session
/// manager's is overwritten. The program's becomes its ownVolume(), with which what is wanted is
/// multiplied from then on. A person's stays as it is, and counts once there has been no other for
/// `rest`: a drag is one change, and a fade that comes back is none.
///
/// A stream that was already heard when we came is only ever made quieter by what is remembered;
/// where it is quieter by itself, it stays as it was found. Before adopt() a stream is nobody's,
/// and nothing is written.
class VolumeKeeper {
  public:
    using TimePoint = platform::MonotonicClock::time_point;

    static constexpr std::chrono::seconds rest{2};

    /// Between two answers to changes of the program, so that one that insists on its volume does
    /// not keep the machine busy.
    static constexpr std::chrono::milliseconds correctionPause{4};

    explicit VolumeKeeper(TimePoint streamAppeared) noexcept : author_(streamAppeared) {}

    /// The stream was there before us. To be told before anything else, as is heardAlready().
    void foundThere() noexcept;

    /// The stream is heard already, and it is not our coming that made it start.
    void heardAlready() noexcept;

    void setKind(StreamKind kind) noexcept { author_.setKind(kind); }

    /// The stream has a link that it can play through.
    void linked() noexcept { author_.linked(); }

    /// Forgets what was wanted and wants `all`, which is what its program remembers.
    [[nodiscard]] VolumeWrite adopt(const WantedVolume& all, TimePoint now);

    /// Wants `change` too from now on. It need not be in effect at once: see due().
    [[nodiscard]] VolumeWrite want(const WantedVolume& change, TimePoint now,
                                   WantReason reason = WantReason::command);

    /// Holds what is wanted as if the stream were new: somebody may set it back now who does not
    /// know of it.
    void uphold(TimePoint now) noexcept;

    /// Once what was asked for is written, the stream is up to others, until the next adopt():
    /// nothing is upheld when it might be new or gets another format. What its program makes of it
    /// is no own volume.
    void release() noexcept;

    /// Whether the stream is heard. What is not heard needs no ramp.
    [[nodiscard]] VolumeWrite setRunning(bool running);

    /// The server told what is in effect.
    [[nodiscard]] VolumeWrite propsArrived(const StreamProps& props, TimePoint now);

    /// When wake() is to be called; nothing when it need not be.
    std::optional<TimePoint> due() const noexcept;

    /// Does what is due: a step of a ramp, a correction, or counting what has rested as a change.
    [[nodiscard]] VolumeWrite wake(TimePoint now);

    /// Whether the stream is on its way to another volume.
    bool isRamping() const noexcept { return ramp_.isRunning(); }

    /// Ends a ramp with its last value.
    [[nodiscard]] VolumeWrite finish();

    /// What the server told last; nothing before the first time.
    const std::optional<StreamProps>& props() const noexcept { return props_; }

    const WantedVolume& wanted() const noexcept { return wanted_; }

    /// What the program has set itself, on top of what is wanted. A fresh stream starts at full.
    const OwnVolume& ownVolume() const noexcept { return own_; }

    /// What others have changed since the last call.
    WantedVolume takeChangesElsewhere() { return std::exchange(elsewhere_, {}); }

    /// What a stream that was already heard turned out to have and keeps, a page by its own volume.
    /// That is no change: nobody knows when it was made.
    WantedVolume takeFound() { return std::exchange(found_, {}); }

  private:
    struct ForeignChange {
        WantedVolume change;
        bool overtaken = false; // by a step of ours that was on its way
    };

    /// What the own volume is taken from.
    enum class OwnKnowledge {
        certain, // it was full at the beginning, or a page has set it
        none,    // the stream was there before us
        guess,   // what it was found with, or set to at its start; a command ends that
    };

    VolumeWrite apply(TimePoint now);
    VolumeWrite applyQuietly(TimePoint now);
    void explainFound();
    VolumeWrite bringAbout(const WantedVolume& change, TimePoint now);
    VolumeWrite restoredBySessionManager(TimePoint now);
    VolumeWrite reformatted();
    ForeignChange takeForeign(const StreamProps& before);
    VolumeWrite changedByProgram(const ForeignChange& foreign, TimePoint now);
    VolumeWrite changedByPerson(const ForeignChange& foreign, TimePoint now);
    VolumeWrite correct(TimePoint now);
    void settle();
    void makeRoomFor(const WantedVolume& change, WantReason reason) noexcept;
    void reviewGuess(const WantedVolume& change, WantReason reason) noexcept;
    void addUntouched(WantedVolume& will) const;
    bool needsRamp(const WantedVolume& change, TimePoint now) const;
    VolumeWrite written(VolumeWrite write);
    WantedVolume heard() const noexcept { return combined(wanted_, own_); }
    std::vector<float> volumesAt(float gain) const;
    float newestGain() const;
    bool isMuted() const;

    ChangeAuthor author_;
    bool heardAlready_ = false;
    bool adopted_ = false;
    bool isReleased_ = true;
    bool running_ = false;
    WantedVolume wanted_;
    OwnVolume own_;
    OwnKnowledge ownKnowledge_ = OwnKnowledge::certain;
    WantedVolume resting_; // what a person seems to have changed
    TimePoint restEnds_;   // while anything rests
    WantedVolume elsewhere_;
    WantedVolume found_;
    std::optional<StreamProps> props_;
    std::vector<float> balance_; // the last channel volumes that were not all zero
    VolumeRamp ramp_;
    std::optional<TimePoint> correction_; // when it is due
    TimePoint lastCorrection_ = TimePoint::min();
    PendingWrites<std::vector<float>> ownVolumes_;
    PendingWrites<bool> ownMutes_;
};
