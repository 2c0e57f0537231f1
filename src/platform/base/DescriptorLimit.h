#pragma once

namespace platform {

/// The limit of open files of the process. The system's soft limit is meant for programs that use
/// select(2), which this one does not; a socket server needs more.

/// Raises the soft limit to the hard one, but not beyond 65536, which is more than there are
/// plug-ins and few enough for programs that close every descriptor they might have. Never lowers
/// it. A failure is a line in the system log. Call it at the start of the program, before other
/// threads.
void raiseDescriptorLimit() noexcept;

/// Restores the soft limit that raiseDescriptorLimit() found. For a child between fork(2) and
/// exec(2), since the new program may use select(2); open descriptors stay open. Does nothing if
/// the limit was not raised. Async-signal-safe.
void restoreDescriptorLimit() noexcept;

/// The first descriptor that is reserved: 128 below the soft limit, or a quarter of it if that is
/// less. Connections of other programs must not use reserved descriptors: replies of the display or
/// the bus that contain a descriptor are lost if none is free. Async- signal-safe.
int firstReservedDescriptor() noexcept;

} // namespace platform
