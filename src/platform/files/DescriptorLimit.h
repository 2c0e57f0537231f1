#pragma once

namespace platform {

/// How many files the process may have open at once. The system's soft limit is meant for programs
/// that watch descriptors with select(2), which this one does not; a socket server needs more.

/// Raises the soft limit to the hard one, but not beyond 65536, which is more than there are
/// plug-ins and few enough for programs that close every descriptor they might have. Never lowers
/// it. A failure is a line in the system log. At the start of the program, before other threads.
void raiseDescriptorLimit() noexcept;

/// Gives the calling process back the soft limit that raiseDescriptorLimit() found. For a child
/// between fork(2) and exec(2), since the program it becomes may use select(2); open descriptors
/// stay open. Does nothing when nothing was raised. Async-signal-safe.
void restoreDescriptorLimit() noexcept;

} // namespace platform
