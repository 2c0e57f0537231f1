#pragma once

#include <span>
#include <string>
#include <sys/types.h>

struct DesktopEntry;
struct ProcessRecord;
class ProcessView;

/// Whether a process is the one that a desktop has started in the process's systemd unit: then it
/// is the application that the unit is named for. What else runs there, that application has
/// started, and it may outlive it.
///
/// `line` are the numbers of the process itself, of its family and of what only runs it. A scope
/// that bears a process's number stands for that one; systemd gives a service's process a session
/// of its own. Where neither tells, the oldest process of the unit counts, and it only when the
/// `entry` starts something that becomes another program. Any thread that `processes` allows.
bool isUnitMainProcess(const std::string& unit, const DesktopEntry& entry,
                       const ProcessRecord& process, std::span<const pid_t> line,
                       const ProcessView& processes);

/// Whether the entry's program becomes another one that nobody knows from the entry: it is a
/// script, or nobody can tell what it is.
bool mayExecAnother(const DesktopEntry& entry);
