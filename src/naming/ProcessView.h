#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

/// The visible facts about a process. Pids are those of our own pid namespace; empty texts are
/// facts that we cannot access.
struct ProcessRecord {
    pid_t pid = 0;
    pid_t parent = 0;
    std::uint64_t startTime = 0; ///< in clock ticks since boot
    pid_t session = 0;           ///< the pid of the process session's leader; or 0
    uid_t user = 0;              ///< the effective one
    std::string executable;      ///< full path; for a process with its own root, the path in there
    std::vector<std::string> arguments; ///< the whole command line
    std::string controlGroups;          ///< as the kernel lists them, a line for each hierarchy
    std::string sandbox;                ///< see sandboxApplication()

    /// The file of the desktop entry from which the desktop started this process. The environment
    /// counts only if it contains the process's own pid, since children inherit it.
    std::string launchedEntry;

    /// The AppImage whose contents the executable belongs to.
    std::string appImage;

    /// The application ids of the process's windows (X11's class, Wayland's app id), if windows are
    /// known. They show that the program is visible to the user, but are not used for its name: see
    /// ApplicationResolver.
    std::vector<std::string> windows = {};
};

/// The processes of a machine: running or recorded ones. The default reads /proc. Any thread, if
/// the derived class has no state.
class ProcessView {
  public:
    virtual ~ProcessView() = default;

    /// Nothing for a process that has ended.
    [[nodiscard]] virtual std::optional<ProcessRecord> process(pid_t pid) const;

    /// The record's start time; cheaper than process().
    [[nodiscard]] virtual std::optional<std::uint64_t> startTime(pid_t pid) const;

    /// The processes of one user, in the order of their pids.
    [[nodiscard]] virtual std::vector<pid_t> processesOf(uid_t user) const;
};
