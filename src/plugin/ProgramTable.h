#pragma once

#include "plugin/Backoff.h"
#include "plugin/Program.h"

#include <memory>
#include <vector>

namespace platform {
class Timer;
} // namespace platform

/// The programs that are or have been heard, and their connections to the application: tried again
/// with growing pauses as long as one is missing. The run loop's thread only.
class ProgramTable : private Program::Listener {
  public:
    class Listener {
      public:
        virtual ~Listener() = default;

        /// The program goes when this returns. Its streams may be there still, but belong to
        /// nobody.
        virtual void programGoes(Program& program) = 0;

        /// Some program has or lost its connection.
        virtual void connectionsChanged() = 0;

        /// See Program::Listener; of no concern unless overridden.
        virtual void programCommanded(Program&, const WantedVolume&) {}
        virtual void programChangedElsewhere(Program&) {}
    };

    ProgramTable(platform::RunLoop& loop, Listener& listener);
    ~ProgramTable() override;
    ProgramTable(const ProgramTable&) = delete;
    ProgramTable& operator=(const ProgramTable&) = delete;

    /// The program of a process, made and announced when it is new. Stays the table's.
    Program& programOf(const platform::StreamProcess& process);

    /// To be called when a program has lost a stream: drops it if that was all that held it.
    void dropUnlessHeld(Program& program);

    /// Connects what is not connected, without waiting for the pause to end.
    void connectNow();

    const std::vector<std::unique_ptr<Program>>& programs() const noexcept { return programs_; }

  private:
    void programEnded(Program& program) override;
    void programDisconnected(Program& program) override;
    void programCommanded(Program& program, const WantedVolume& change) override {
        listener_.programCommanded(program, change);
    }
    void programChangedElsewhere(Program& program) override {
        listener_.programChangedElsewhere(program);
    }
    void connectMissing();

    platform::RunLoop& loop_;
    Listener& listener_;
    std::vector<std::unique_ptr<Program>> programs_;
    Backoff pauses_;
    const std::unique_ptr<platform::Timer> retry_;
};
