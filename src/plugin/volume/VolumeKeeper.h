#pragma once

#include "plugin/volume/ChangeAuthor.h"
#include "plugin/volume/PendingWrites.h"
#include "plugin/volume/StreamVolume.h"
#include "plugin/volume/VolumeRamp.h"

#include <optional>
#include <utility>
#include <vector>

/// Why a volume is wanted, which decides what happens to a guessed own volume.
enum class WantReason {
    command,  ///< a command: ends the guess, unless that volume is wanted already
    news,     ///< the user set it before the stream was found: ends the guess
    restored, ///< a remembered volume: never makes the stream louder
};

/// Keeps one stream at its wanted volume: decides what is written, and who made each change that
/// the server reports. Has no clock, timer or connection; write the result of each operation at
/// once, in order. Any thread, one at a time.
///
/// The handling of a foreign change depends on its author, see ChangeAuthor. The session manager's
/// is overwritten. The program's becomes its ownVolume(), which is multiplied with the wanted
/// volume from then on. The user's is kept, and counts when nothing has changed for `rest`: a drag
/// is one change, and a fade that returns is none.
///
/// A remembered volume only makes a stream quieter that played before we started; if it is quieter
/// already, it keeps its volume. Before adopt() a stream has no owner, and nothing is written.
class VolumeKeeper {
  public:
    using TimePoint = platform::MonotonicClock::time_point;

    static constexpr std::chrono::seconds rest{2};

    /// The minimum time between corrections, so that a program that keeps setting its volume does
    /// not keep the machine busy.
    static constexpr std::chrono::milliseconds correctionPause{4};

    explicit VolumeKeeper(TimePoint streamAppeared) noexcept : author_(streamAppeared) {}

    /// The stream existed before us. Call this and heardAlready() before anything else.
    void foundThere() noexcept;

    /// The stream already plays, and was not started by our arrival.
    void heardAlready() noexcept;

    void setKind(StreamKind kind) noexcept { author_.setKind(kind); }

    /// The stream has a link that it can play through.
    void linked() noexcept { author_.linked(); }

    /// Replaces the wanted volume with `all`, the volume of its program.
    [[nodiscard]] VolumeWrite adopt(const WantedVolume& all, TimePoint now);

    /// Merges `change` into the wanted volume. It may take effect later: see due().
    [[nodiscard]] VolumeWrite want(const WantedVolume& change, TimePoint now,
                                   WantReason reason = WantReason::command);

    /// Holds the wanted volume as if the stream were new: the session manager may reset it now.
    void uphold(TimePoint now) noexcept;

    /// After pending changes are written, the volume is no longer enforced until the next adopt(),
    /// not even after uphold() or a change of format. Changes by the program are not tracked as its
    /// own volume.
    void release() noexcept;

    /// Sets whether the stream plays. A silent stream needs no ramp.
    [[nodiscard]] VolumeWrite setRunning(bool running);

    /// The server has reported the current volume.
    [[nodiscard]] VolumeWrite propsArrived(const StreamProps& props, TimePoint now);

    /// When to call wake(); nothing if not needed.
    [[nodiscard]] std::optional<TimePoint> due() const noexcept;

    /// Does what is due: a ramp step, a correction, or accepting the user's change.
    [[nodiscard]] VolumeWrite wake(TimePoint now);

    /// Whether a ramp is running.
    [[nodiscard]] bool isRamping() const noexcept { return ramp_.isRunning(); }

    /// Finishes a ramp with its final value.
    [[nodiscard]] VolumeWrite finish();

    /// The last report of the server; nothing before the first one.
    [[nodiscard]] const std::optional<StreamProps>& props() const noexcept { return props_; }

    [[nodiscard]] const WantedVolume& wanted() const noexcept { return wanted_; }

    /// The program's own volume, on top of the wanted one. A new stream starts at full.
    [[nodiscard]] const OwnVolume& ownVolume() const noexcept { return own_; }

    /// Others' changes since the last call.
    WantedVolume takeChangesElsewhere() { return std::exchange(elsewhere_, {}); }

    /// The volume of an existing stream that it keeps, in the case of a page as its own volume.
    /// This is not a change, since the time is unknown.
    WantedVolume takeFound() { return std::exchange(found_, {}); }

  private:
    struct ForeignChange {
        WantedVolume change;
        bool overtaken = false; // by a step of ours in flight
    };

    /// The source of the own volume.
    enum class OwnKnowledge {
        certain, // it was full at the start, or a page has set it
        none,    // the stream was there before us
        guess,   // its volume when found, or its initial volume; a command ends that
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
    WantedVolume resting_; // the user's presumed change
    TimePoint restEnds_;   // when resting_ counts as a change
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
