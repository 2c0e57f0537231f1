#pragma once

#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace platform {

/// What systemd's units tell of a process, by the control groups that the kernel lists. Any thread.

/// A unit's name, or a part of it, with the characters for which systemd writes \xHH.
std::string unescapedUnit(std::string_view unit);

/// The innermost unit that the process belongs to; empty without one.
std::string systemdUnit(std::string_view controlGroups);

/// The id of the desktop entry that a desktop has started in the unit, as units are named for it:
/// "app-org.example.Player-4711.scope", "app-gnome-player-4711.scope",
/// "app-player@autostart.service", "dbus-:1.2-org.example.Player@0.service". Names of launchers can
/// not be told from parts of the id, so there may be several; the first that is an entry counts.
/// Empty for other units.
std::vector<std::string> unitApplications(std::string_view unit);

/// The process that a scope has been made for, where the scope's name ends in that one's number, as
/// "app-gnome-player-4711.scope"; 0 for other units.
pid_t processOfScope(std::string_view unit);

/// The login session that the process belongs to; empty for one that belongs to none in particular,
/// such as those that the user's service manager has started.
std::string loginSession(std::string_view controlGroups);

/// The part of a snap, or empty: "part" for "snap.name.part-….scope".
std::string snapPart(std::string_view controlGroups);

} // namespace platform
