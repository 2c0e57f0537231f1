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

/// One program that has had an output stream, all processes of which have the same name for a
/// person: its processes, its streams, its volume, and its connection to the application. It checks
/// in with its first main process; when that has ended while others go on, it checks in anew with
/// the next. The run loop's thread only.
class Program : private AppConnection::Listener {
  public:
    class Owner {
      public:
        virtual ~Owner() = default;

        /// The last process is no more. The program may be destroyed in here.
        virtual void programEnded(Program& program) = 0;
        virtual void programDisconnected(Program& program) = 0;
    };

    /// What happens to it is of no concern unless overridden.
    class Listener {
      public:
        virtual ~Listener() = default;

        /// It is new: nobody wants anything of it, and it has no streams.
        virtual void programAdded(Program&) {}

        /// It has checked in, under the process() that it has now.
        virtual void programConnected(Program&) {}

        /// The application asked for `change`, and got it.
        virtual void programCommanded(Program&, const WantedVolume& /*change*/) {}

        /// wanted(), which was `before`, is another now, by somebody else's doing.
        virtual void programChangedElsewhere(Program&, const WantedVolume& /*before*/) {}

        /// The application says that its list of ignored programs has changed.
        virtual void ignoreListChanged() {}
    };

    /// `process` is what checks in; it does not make the program last.
    Program(platform::RunLoop& loop, ProgramProcess process, Owner& owner, Listener& listener,
            const ApplicationReports& reports);

    /// Leaves the application with a last zero if the program played.
    ~Program() override;
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    const ProgramProcess& process() const noexcept { return process_; }

    /// What decides how long the program lasts.
    ProgramLifetime& lifetime() noexcept { return lifetime_; }
    const ProgramLifetime& lifetime() const noexcept { return lifetime_; }

    /// Gives the stream the program's volume, from now on too. The stream must be removed before it
    /// goes.
    void add(AudioStream& stream);

    /// Leaves the stream, of whatever program, with the volume that it has. What the program wants
    /// stays, also when that was its last stream.
    void remove(AudioStream& stream);
    const std::unordered_set<AudioStream*>& streams() const noexcept { return streams_; }

    /// What the program's next stream will have: what the application or somebody else asked for
    /// last.
    const WantedVolume& wanted() const noexcept { return wanted_; }

    /// Takes over what somebody set in another mixer, for the next streams. Those that play are
    /// left alone.
    void changedElsewhere(const WantedVolume& change);

    /// Takes over what a stream that was heard before us is found to have, for the next streams,
    /// so that they are not louder either. That is no news for anybody.
    void found(const WantedVolume& found);

    /// Takes over what is remembered of the program, for the next streams.
    void recall(const WantedVolume& remembered);

    /// Asks for a volume, for all streams.
    void want(const WantedVolume& change, WantReason reason = WantReason::command);

    /// Has nothing wanted of the program from now on, nor anything taken over from elsewhere; only
    /// the application's commands are still carried out. When `reset`, its streams, or else the
    /// first one to come, go to full volume, not muted, before that.
    void ignore(bool reset);

    /// Ends that, with nothing wanted.
    void unignore();
    bool isIgnored() const noexcept { return ignored_; }

    /// What the next stream gets, which settles what is owed to it.
    [[nodiscard]] WantedVolume takeForNext() noexcept;

    /// Why none of the streams' volume can be set, for people; empty when it can, or nobody knows.
    /// Stays as it was without streams.
    const std::string& obstacle() const noexcept { return obstacle_; }

    /// Looks at the streams for that again, and tells the application when it is another now.
    void reviewObstacle();

    /// Tries once to connect to the application. True when connected.
    bool connect();
    bool isConnected() const noexcept { return connection_ != nullptr; }

    /// Whether the application believes that the program plays.
    bool isPlaying() const noexcept { return playing_; }

    /// Passes the level on while there is one, and a single zero when it ends.
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
    WantedVolume remembered_; // what was wanted before the present streams came, and commands since
    bool playing_ = false;
    bool ignored_ = false;
    bool resetsNext_ = false; // the next stream is owed full volume, although it is left alone
    std::string obstacle_;
    ProgramLifetime lifetime_;
    std::unique_ptr<AppConnection> connection_;
};
