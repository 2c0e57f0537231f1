#pragma once

#include <string>
#include <sys/types.h>

namespace platform {

/// What the threads of a process do at the moment, a line for each: its number, name, state, CPU
/// time in seconds, and the place in the kernel where it waits. Works for every process of the same
/// user, even where debuggers may not look. Empty if the process has ended. Any thread.
[[nodiscard]] std::string threadStates(pid_t process);

} // namespace platform
