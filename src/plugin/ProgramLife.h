#pragma once

#include "platform/processes/StreamProcess.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace platform {
class ProcessWatch;
class RunLoop;
} // namespace platform

/// How long a program lasts: until the last of its processes that ever had a stream has ended.
/// Processes are watched, not streams, which programs drop and make whenever they pause. A process
/// that cannot be watched, because it is not here or has ended already, counts as ended when the
/// client of the sound server that stands for it goes. The run loop's thread only.
class ProgramLife {
  public:
    /// `changed` is called when a process has ended, from the loop or from any function below but
    /// join(): first() may be another now. The life may be destroyed in there.
    ProgramLife(platform::RunLoop& loop, std::function<void()> changed);
    ~ProgramLife();
    ProgramLife(const ProgramLife&) = delete;
    ProgramLife& operator=(const ProgramLife&) = delete;

    /// A stream of this process, owned by this client of the sound server, has come.
    void join(const platform::StreamProcess& process, std::uint32_t client);

    /// A join() was an error: the stream is of another process.
    void withdraw(const platform::StreamProcess& process, std::uint32_t client);

    /// The number of the process is that of an earlier one no more.
    void endPredecessor(const platform::StreamProcess& process);

    /// The client of the sound server has gone. What is not watched and came with it has ended.
    void clientGone(std::uint32_t client);

    /// The process that has been there longest; null when all have ended.
    const platform::StreamProcess* first() const noexcept;

  private:
    struct Part {
        platform::StreamProcess process;
        std::optional<std::uint32_t> client; // set when there is no watch
        std::unique_ptr<platform::ProcessWatch> watch;
        int streams = 0; // all that it ever had
    };

    std::vector<Part>::iterator find(const platform::StreamProcess& process, std::uint32_t client);
    Part makePart(const platform::StreamProcess& process, std::uint32_t client);
    template <typename Condition>
    void drop(const Condition& condition);

    platform::RunLoop& loop_;
    const std::function<void()> changed_;
    std::vector<Part> parts_;
};
