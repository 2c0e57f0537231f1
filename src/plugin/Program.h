#pragma once

#include "platform/StreamProcess.h"
#include "plugin/AppConnection.h"
#include "plugin/ProgramLife.h"
#include "plugin/StreamVolume.h"

#include <functional>
#include <memory>
#include <unordered_set>

class AudioStream;

namespace platform {
class RunLoop;
} // namespace platform

/// One program that has had an output stream: its processes, its streams, its volume, and its
/// connection to the application. It checks in with its first process; when that has ended while
/// others go on, it checks in anew with the next. The run loop's thread only.
class Program : private AppConnection::Listener {
  public:
    class Listener {
      public:
        virtual ~Listener() = default;

        /// The last process is no more. The program may be destroyed in here.
        virtual void programEnded(Program& program) = 0;
        virtual void programDisconnected(Program& program) = 0;

        /// The application asked for `change`, and got it.
        virtual void programCommanded(Program& program, const WantedVolume& change) = 0;

        /// wanted() is another now, and not by the application.
        virtual void programChangedElsewhere(Program& program) = 0;
    };

    /// `process` is what checks in; it does not make the program last.
    Program(platform::RunLoop& loop, platform::StreamProcess process, Listener& listener);

    /// Leaves the application with a last zero if the program played.
    ~Program() override;
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    const platform::StreamProcess& process() const noexcept { return process_; }

    /// What decides how long the program lasts.
    ProgramLife& life() noexcept { return life_; }

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

    /// Takes over what a program before it had, and tells nobody. For a new program.
    void restore(const WantedVolume& all) noexcept { wanted_ = all; }

    /// Takes over what somebody set in another mixer, for the next streams. Those that play are
    /// left alone.
    void changedElsewhere(const WantedVolume& change);

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
    void lifeChanged();

    platform::RunLoop& loop_;
    platform::StreamProcess process_;
    Listener& listener_;
    std::unordered_set<AudioStream*> streams_; // not owned
    WantedVolume wanted_;
    WantedVolume remembered_; // what was wanted before the present streams came, and commands since
    bool playing_ = false;
    ProgramLife life_;
    std::unique_ptr<AppConnection> connection_;
};
