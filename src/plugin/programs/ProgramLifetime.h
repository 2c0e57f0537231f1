#pragma once

#include "plugin/identity/ProgramProcess.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace platform {
class ProcessWatch;
class RunLoop;
} // namespace platform

/// How long a program lasts: until the last of its processes has ended, those that ever had a
/// stream and the main ones of the application. Processes are watched, not streams, which programs
/// drop and make whenever they pause. A process that cannot be watched, because it is not here or
/// has ended already, counts as ended when the client of the sound server that stands for it goes.
/// The run loop's thread only.
class ProgramLifetime {
  public:
    /// What a process is to its application.
    enum class Role { main, helper };

    struct Member {
        ProgramProcess process;
        Role role;
        std::uint32_t client; ///< by which it has joined first
    };

    /// `changed` is called when a process has ended, from the loop or from any function below but
    /// join(): first() may be another now. The life may be destroyed in there.
    ProgramLifetime(platform::RunLoop& loop, std::function<void()> changed);
    ~ProgramLifetime();
    ProgramLifetime(const ProgramLifetime&) = delete;
    ProgramLifetime& operator=(const ProgramLifetime&) = delete;

    /// A stream of this process, owned by this client of the sound server, has come; or of a helper
    /// of it.
    void join(const ProgramProcess& process, std::uint32_t client, Role role);

    /// A join() was an error: the stream is of another process.
    void withdraw(const ProgramProcess& process, std::uint32_t client);

    /// The process, or what the client stands for, is of another program.
    void release(const ProgramProcess& process, std::uint32_t client);

    /// The number of the process is that of an earlier one no more.
    void endPredecessor(const ProgramProcess& process);

    /// The client of the sound server has gone. What is not watched and came with it has ended.
    void clientGone(std::uint32_t client);

    bool contains(const ProgramProcess& process) const;

    /// The main process that has been there longest, or else any process; null when all have ended.
    const ProgramProcess* first() const noexcept;

    /// All processes, in the order of their coming.
    std::vector<Member> members() const;

  private:
    struct Part {
        Member member;
        bool endsWithClient = false; // there is no watch
        std::unique_ptr<platform::ProcessWatch> watch;
        int streams = 0; // all that it ever had
    };

    static bool isOf(const Part& part, const ProgramProcess& process, std::uint32_t client);
    std::vector<Part>::iterator find(const ProgramProcess& process, std::uint32_t client);
    Part makePart(const ProgramProcess& process, std::uint32_t client, Role role);
    template <typename Condition>
    void drop(const Condition& condition);

    platform::RunLoop& loop_;
    const std::function<void()> changed_;
    std::vector<Part> parts_;
};
