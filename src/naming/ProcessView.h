#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

/// What can be seen of a process from outside. Numbers are those of our own pid namespace, empty
/// texts are facts that the kernel hides from us.
struct ProcessRecord {
    pid_t pid = 0;
    pid_t parent = 0;
    std::uint64_t startTime = 0; ///< in clock ticks since boot
    pid_t session = 0;           ///< of processes: the number of the one that began it; or 0
    uid_t user = 0;              ///< the effective one
    std::string executable;      ///< full path; for a process with a root of its own as seen there
    std::vector<std::string> arguments; ///< the whole command line
    std::string controlGroups;          ///< as the kernel lists them, a line for each hierarchy
    std::string sandbox;                ///< see sandboxApplication()

    /// The desktop entry's file that the desktop has started this very process from. Only an
    /// environment that names the process itself counts, since children inherit it.
    std::string launchedEntry;

    /// The AppImage whose contents the executable belongs to.
    std::string appImage;

    /// What the process's windows call their application (X11's class, Wayland's app id), where
    /// somebody has seen windows. They tell that a person sees the program, not its name: see
    /// ApplicationResolver.
    std::vector<std::string> windows = {};
};

/// The processes of a machine: those that run, or recorded ones. The default reads /proc. Any
/// thread, if the derived class has no state.
class ProcessView {
  public:
    virtual ~ProcessView() = default;

    /// Nothing for a process that has ended.
    virtual std::optional<ProcessRecord> process(pid_t pid) const;

    /// As the record says; cheaper.
    virtual std::optional<std::uint64_t> startTime(pid_t pid) const;

    /// Those of one user, in the order of their numbers.
    virtual std::vector<pid_t> processesOf(uid_t user) const;
};
