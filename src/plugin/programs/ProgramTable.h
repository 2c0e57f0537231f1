#pragma once

#include "plugin/identity/PseudoPids.h"
#include "plugin/programs/Program.h"
#include "plugin/server/Backoff.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace platform {
class Timer;
} // namespace platform

/// The programs that are or have been heard, one for each name, and their connections to the
/// application: tried again with growing pauses as long as one is missing. A process belongs to one
/// program only, the one that it has joined last. The run loop's thread only.
class ProgramTable : private Program::Owner {
  public:
    class Listener {
      public:
        virtual ~Listener() = default;

        /// The program goes when this returns. Its streams may be there still, but belong to
        /// nobody.
        virtual void programGoes(Program& program) = 0;

        /// Some program has or lost its connection.
        virtual void connectionsChanged() = 0;
    };

    /// `ofPrograms` hears what happens to each. All must outlive the table.
    ProgramTable(platform::RunLoop& loop, Listener& listener, Program::Listener& ofPrograms,
                 const ApplicationReports& reports);
    ~ProgramTable() override;
    ProgramTable(const ProgramTable&) = delete;
    ProgramTable& operator=(const ProgramTable&) = delete;

    /// The program of that name, or null.
    Program* find(const std::string& name) const;

    /// What is known of the process, or null when it is of no program.
    std::optional<ProgramProcess> find(const StreamProcess& process) const;

    /// The player under the name that it has beside the programs that are there. It keeps that as
    /// long as one of its processes lasts, whoever else has gone.
    StreamPlayer disambiguated(StreamPlayer player) const;

    /// The program of a player that has a new stream, which this client of the sound server owns.
    /// Made and announced when it is new. Stays the table's.
    Program& join(StreamPlayer player, std::uint32_t client);

    /// A join() was an error. Drops the program if that was all that held it.
    void withdraw(Program& program, StreamPlayer player, std::uint32_t client);

    /// Names may have changed: has each process in the program whose name it has now. `named`
    /// tells that; programs that nothing is left of are dropped, others are made. Streams have to
    /// be moved before.
    void rename(const std::function<StreamPlayer(const ProgramProcess&)>& named);

    /// Drops the programs that have nothing but this client of the sound server.
    void clientGone(std::uint32_t client);

    /// Makes and announces a program that lasts until programEnded(). Stays the table's.
    Program& add(const ProgramProcess& process);

    /// Drops a program that has no streams.
    void programEnded(Program& program) override;

    /// Connects what is not connected, without waiting for the pause to end.
    void connectNow();

    const std::vector<std::unique_ptr<Program>>& programs() const noexcept { return programs_; }

  private:
    void programDisconnected(Program& program) override;
    void connectMissing();
    bool hasHelpers(const std::string& program) const;
    void takeFromOthers(const ProgramProcess& process, std::uint32_t client);
    void giveNumber(ProgramProcess& process);
    std::vector<Program*> all() const;

    platform::RunLoop& loop_;
    Listener& listener_;
    Program::Listener& ofPrograms_;
    const ApplicationReports& reports_;
    std::vector<std::unique_ptr<Program>> programs_;
    PseudoPids numbers_;
    Backoff pauses_;
    const std::unique_ptr<platform::Timer> retry_;
};
