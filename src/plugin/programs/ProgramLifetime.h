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

/// The lifetime of a program: until the last of its processes has ended, counting those that ever
/// had a stream and the application's main processes. Processes are watched, not streams, which
/// programs drop and recreate whenever they pause. A process that cannot be watched, because it is
/// remote or has ended already, counts as ended when its client of the sound server disappears. The
/// run loop's thread only.
class ProgramLifetime {
  public:
    /// What a process is to its application.
    enum class Role { main, helper };

    struct Member {
        ProgramProcess process;
        Role role;
        std::uint32_t client; ///< with which it joined first
    };

    /// `changed` is called when a process has ended, so that first() may have changed, from the
    /// loop or from any function below except join(). It may destroy this object.
    ProgramLifetime(platform::RunLoop& loop, std::function<void()> changed);
    ~ProgramLifetime();
    ProgramLifetime(const ProgramLifetime&) = delete;
    ProgramLifetime& operator=(const ProgramLifetime&) = delete;

    /// A stream of this process, owned by this client of the sound server, has come; or of a helper
    /// of it.
    void join(const ProgramProcess& process, std::uint32_t client, Role role);

    /// Reverts a wrong join(): the stream belongs to another process.
    void withdraw(const ProgramProcess& process, std::uint32_t client);

    /// The process, or that of the client, belongs to another program.
    void release(const ProgramProcess& process, std::uint32_t client);

    /// The pid now belongs to this process, so an earlier one with the same pid has ended.
    void endPredecessor(const ProgramProcess& process);

    /// The client of the sound server has disconnected. Its unwatched processes count as ended.
    void clientGone(std::uint32_t client);

    [[nodiscard]] bool contains(const ProgramProcess& process) const;

    /// The oldest main process, or else any process; null if all have ended.
    [[nodiscard]] const ProgramProcess* first() const noexcept;

    /// All processes, in the order in which they joined.
    [[nodiscard]] std::vector<Member> members() const;

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
