#pragma once

#include <span>
#include <string>
#include <sys/types.h>

struct DesktopEntry;
struct ProcessRecord;
class ProcessView;

/// Whether a process is the one that the desktop started in its systemd unit: then it is the
/// application that the unit is named after. Other processes of the unit were started by that
/// application, and may outlive it.
///
/// `line` contains the pids of the process, of its family and of what only runs it. A scope whose
/// name contains a pid belongs to that process; systemd gives a service's process its own session.
/// Otherwise it is the oldest process of the unit, but only if the program of `entry` executes
/// another one. Any thread that `processes` allows.
[[nodiscard]] bool isUnitMainProcess(const std::string& unit, const DesktopEntry& entry,
                                     const ProcessRecord& process, std::span<const pid_t> line,
                                     const ProcessView& processes);

/// Whether the entry's program may execute another one that the entry does not name: it is a
/// script, or unknown.
[[nodiscard]] bool mayExecAnother(const DesktopEntry& entry);
