#pragma once

#include "platform/base/FileDescriptor.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace platform {

class RunLoop;
class RunLoopSource;

/// Facts from the kernel about a process. Any thread. The result is empty if the process has ended
/// or the fact is not accessible.

/// The full path of the executable, without the kernel's " (deleted)" mark.
[[nodiscard]] std::optional<std::string> executablePath(pid_t process);

/// Whether the file at `path` is the one that the process runs: not after it was deleted or
/// replaced by another. False if that cannot be told.
[[nodiscard]] bool runsFile(pid_t process, const std::string& path);

/// The kernel's short name of the process, at most 15 bytes.
[[nodiscard]] std::optional<std::string> commandName(pid_t process);

/// The user that the process runs as (its effective user).
[[nodiscard]] std::optional<uid_t> processUser(pid_t process);

/// The processes that run as that user, by their pids in ascending order.
std::vector<pid_t> processesOf(uid_t user);

/// The start time in clock ticks since boot. Together with the pid it distinguishes a process from
/// a later one with the same pid.
[[nodiscard]] std::optional<std::uint64_t> processStartTime(pid_t process);

/// Now, in clock ticks since boot: comparable with processStartTime().
std::uint64_t ticksSinceBoot();

/// The pids of the process in our pid namespace and in the nested ones that it belongs to, the
/// outermost first. One pid: the process is in our namespace. Empty if unknown.
std::vector<pid_t> processNumbers(pid_t process);

/// Whether the process is certainly in our own pid namespace, so that it has one pid only. Much
/// cheaper than processNumbers().
[[nodiscard]] bool sharesProcessNumbers(pid_t process);

/// The control groups of the process as the kernel lists them, a line for each hierarchy.
std::string controlGroups(pid_t process);

/// The beginning of a file, at most 16 KiB, in the process's view of the file system; empty if
/// there is no such regular file. `path` begins with a slash.
std::string fileSeenBy(pid_t process, const std::string& path);

/// Calls a handler once, on the run loop's thread, when a process has ended. The loop's thread
/// only; destroying the watch ends it, also from inside the handler.
class ProcessWatch {
  public:
    /// Null, with errno set, if the process has ended already (ESRCH) or cannot be watched.
    [[nodiscard]] static std::unique_ptr<ProcessWatch> create(RunLoop& loop, pid_t process,
                                                              std::function<void()> ended);
    ~ProcessWatch();
    ProcessWatch(const ProcessWatch&) = delete;
    ProcessWatch& operator=(const ProcessWatch&) = delete;

  private:
    explicit ProcessWatch(FileDescriptor process);

    const FileDescriptor process_;
    std::unique_ptr<RunLoopSource> source_;
};

} // namespace platform
