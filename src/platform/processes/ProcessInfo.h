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

/// What the kernel says about a process. Any thread. Nothing is answered for a process that has
/// ended or hides the fact from us.

/// The full path of the executable, without the kernel's " (deleted)" mark.
std::optional<std::string> executablePath(pid_t process);

/// The short name that the kernel shows, at most 15 bytes.
std::optional<std::string> commandName(pid_t process);

/// The user that the process runs as (its effective user).
std::optional<uid_t> processUser(pid_t process);

/// Start of the process in clock ticks since boot. With the number it tells a process from a later
/// one of the same number.
std::optional<std::uint64_t> processStartTime(pid_t process);

/// Now, in clock ticks since boot: comparable with processStartTime().
std::uint64_t ticksSinceBoot();

/// The numbers of the process in our pid namespace and in those inside it that it belongs to, the
/// outermost first. One number: the process counts as we do. Empty when nothing is known.
std::vector<pid_t> processNumbers(pid_t process);

/// Whether the process is certainly of our own pid namespace, so that it has one number only. Much
/// cheaper than processNumbers().
bool sharesProcessNumbers(pid_t process);

/// The control groups of the process as the kernel lists them, a line for each hierarchy.
std::string controlGroups(pid_t process);

/// The beginning of a file, at most 16 KiB, as the process sees the file system; empty when there
/// is no such regular file. `path` begins with a slash.
std::string fileSeenBy(pid_t process, const std::string& path);

/// Calls a handler once, on the run loop's thread, when a process has ended. The loop's thread
/// only; destroying the watch ends it, also from inside the handler.
class ProcessWatch {
  public:
    /// Null, with errno set, when the process has ended already (ESRCH) or cannot be watched.
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
