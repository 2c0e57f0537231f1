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

/// The first descriptor that a connection of another program may not have: 128 below the soft
/// limit, or a quarter of it where that is less. What lies above is for the process's own work,
/// since a display's or a bus's reply that brings a descriptor is lost where none is free. Async-
/// signal-safe.
int firstReservedDescriptor() noexcept;

} // namespace platform
