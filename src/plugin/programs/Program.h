#pragma once

#include "plugin/connection/AppConnection.h"
#include "plugin/connection/ApplicationReports.h"
#include "plugin/identity/ProgramProcess.h"
#include "plugin/programs/ProgramLifetime.h"
#include "plugin/volume/StreamVolume.h"
#include "plugin/volume/VolumeKeeper.h"

#include <functional>
#include <memory>
#include <string>
#include <unordered_set>

class AudioStream;

namespace platform {
class RunLoop;
} // namespace platform

/// One program that has had an output stream, with all processes of the same displayed name: its
/// processes, streams, volume, and connection to the application. It checks in with its first main
/// process; if that ends while others remain, it checks in again with the next. The run loop's
/// thread only.
class Program : private AppConnection::Listener {
  public:
    class Owner {
      public:
        virtual ~Owner() = default;

        /// The last process has ended. The handler may destroy the program.
        virtual void programEnded(Program& program) = 0;
        virtual void programDisconnected(Program& program) = 0;
    };

    /// What happens to it is of no concern unless overridden.
    class Listener {
      public:
        virtual ~Listener() = default;

        /// It is new: nobody wants anything of it, and it has no streams.
        virtual void programAdded(Program&) {}

        /// It has checked in with the current process().
        virtual void programConnected(Program&) {}

        /// The application has sent the command `change`, which has been applied.
        virtual void programCommanded(Program&, const WantedVolume& /*change*/) {}

        /// wanted() was changed from `before` by someone else.
        virtual void programChangedElsewhere(Program&, const WantedVolume& /*before*/) {}

        /// The application has reported a change of the ignore list.
        virtual void ignoreListChanged() {}
    };

    /// `process` is used for the check-in; it does not extend the program's lifetime.
    Program(platform::RunLoop& loop, ProgramProcess process, Owner& owner, Listener& listener,
            const ApplicationReports& reports);

    /// Sends a final zero level if the program played.
    ~Program() override;
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    [[nodiscard]] const ProgramProcess& process() const noexcept { return process_; }

    /// The program's lifetime.
    ProgramLifetime& lifetime() noexcept { return lifetime_; }
    [[nodiscard]] const ProgramLifetime& lifetime() const noexcept { return lifetime_; }

    /// Applies the program's volume to the stream, now and later. The stream must be removed before
    /// it is destroyed.
    void add(AudioStream& stream);

    /// Removes the stream, which keeps its volume. The program's wanted volume stays, even if that
    /// was its last stream.
    void remove(AudioStream& stream);
    [[nodiscard]] const std::unordered_set<AudioStream*>& streams() const noexcept {
        return streams_;
    }

    /// The volume of the program's next stream, as set last by the application or someone else.
    [[nodiscard]] const WantedVolume& wanted() const noexcept { return wanted_; }

    /// Takes over a change made in another mixer, for the next streams. Playing streams are not
    /// changed.
    void changedElsewhere(const WantedVolume& change);

    /// Takes over the volume of a stream that played before we started, for the next streams, so
    /// that they are not louder either. This is not reported.
    void found(const WantedVolume& found);

    /// Takes over the remembered volume, for the next streams.
    void recall(const WantedVolume& remembered);

    /// Sets the volume of all streams.
    void want(const WantedVolume& change, WantReason reason = WantReason::command);

    /// Ignores the program from now on: no wanted volume, and no changes are taken over; only the
    /// application's commands are still applied. If `reset`, its streams, or else its next one,
    /// first go to full volume, not muted.
    void ignore(bool reset);

    /// Ends that, without a wanted volume.
    void unignore();
    [[nodiscard]] bool isIgnored() const noexcept { return ignored_; }

    /// The volume of the next stream. Clears a pending reset.
    [[nodiscard]] WantedVolume takeForNext() noexcept;

    /// Why no stream's volume can be set, as text for the user; empty if one can, or unknown. Keeps
    /// its value without streams.
    [[nodiscard]] const std::string& obstacle() const noexcept { return obstacle_; }

    /// Looks at the streams for that again, and tells the application when it is another now.
    void reviewObstacle();

    /// Tries once to connect to the application. True when connected.
    [[nodiscard]] bool connect();
    [[nodiscard]] bool isConnected() const noexcept { return connection_ != nullptr; }

    /// Whether the application believes that the program plays.
    [[nodiscard]] bool isPlaying() const noexcept { return playing_; }

    /// Sends the level while there is one, and a single zero when it ends.
    void report(float level);

  private:
    void commandArrived(const MVCommConsoleMessage& command) override;
    void connectionLost() override;
    void lifetimeChanged();

    platform::RunLoop& loop_;
    ProgramProcess process_;
    Owner& owner_;
    Listener& listener_;
    const ApplicationReports& reports_;
    std::unordered_set<AudioStream*> streams_; // not owned
    WantedVolume wanted_;
    WantedVolume remembered_; // wanted before the present streams, and commands since
    bool playing_ = false;
    bool ignored_ = false;
    bool resetsNext_ = false; // the next stream must be reset, although the program is ignored
    std::string obstacle_;
    ProgramLifetime lifetime_;
    std::unique_ptr<AppConnection> connection_;
};
