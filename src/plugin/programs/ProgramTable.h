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

/// The programs that play or have played, one for each name, and their connections to the
/// application, which are retried with growing pauses. A process belongs to one program only, the
/// last one that it joined. The run loop's thread only.
class ProgramTable : private Program::Owner {
  public:
    class Listener {
      public:
        virtual ~Listener() = default;

        /// The program is destroyed when this returns. Its streams may still exist, but belong to
        /// no program.
        virtual void programGoes(Program& program) = 0;

        /// A program has connected or disconnected.
        virtual void connectionsChanged() = 0;
    };

    /// `ofPrograms` hears what happens to each. All must outlive the table.
    ProgramTable(platform::RunLoop& loop, Listener& listener, Program::Listener& ofPrograms,
                 const ApplicationReports& reports);
    ~ProgramTable() override;
    ProgramTable(const ProgramTable&) = delete;
    ProgramTable& operator=(const ProgramTable&) = delete;

    /// The program of that name, or null.
    [[nodiscard]] Program* find(const std::string& name) const;

    /// The known data of the process, or nothing if it belongs to no program.
    [[nodiscard]] std::optional<ProgramProcess> find(const StreamProcess& process) const;

    /// The player with its unique name beside the existing programs. It keeps the name as long as
    /// one of its processes exists, even if the other programs end.
    [[nodiscard]] StreamPlayer disambiguated(StreamPlayer player) const;

    /// The program of a player with a new stream, which this client of the sound server owns.
    /// Created and announced if it is new. Owned by the table.
    Program& join(StreamPlayer player, std::uint32_t client);

    /// Reverts a wrong join(). Drops the program if nothing else keeps it.
    void withdraw(Program& program, StreamPlayer player, std::uint32_t client);

    /// Names may have changed: moves each process to the program with its current name, which
    /// `named` returns; empty programs are dropped, new ones created. Move the streams before.
    void rename(const std::function<StreamPlayer(const ProgramProcess&)>& named);

    /// Drops the programs that only have this client of the sound server.
    void clientGone(std::uint32_t client);

    /// Makes and announces a program that lasts until programEnded(). Stays the table's.
    Program& add(const ProgramProcess& process);

    /// Drops a program that has no streams.
    void programEnded(Program& program) override;

    /// Connects unconnected programs, without waiting for the next retry.
    void connectNow();

    [[nodiscard]] const std::vector<std::unique_ptr<Program>>& programs() const noexcept {
        return programs_;
    }

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
