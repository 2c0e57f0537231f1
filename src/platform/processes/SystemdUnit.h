#pragma once

#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace platform {

/// Facts about a process from its systemd units, which are taken from its control groups. Any
/// thread.

/// Decodes the \xHH escapes in a unit's name, or in a part of it.
std::string unescapedUnit(std::string_view unit);

/// The innermost unit that the process belongs to; empty without one.
std::string systemdUnit(std::string_view controlGroups);

/// The id of the desktop entry that a desktop has started in the unit, from the unit's name:
/// "app-org.example.Player-4711.scope", "app-gnome-player-4711.scope",
/// "app-player@autostart.service", "dbus-:1.2-org.example.Player@0.service". Launcher names cannot
/// be distinguished from parts of the id, so there may be several; use the first that is an entry.
/// Empty for other units.
std::vector<std::string> unitApplications(std::string_view unit);

/// The process that a scope was created for, if the scope's name ends in its pid, as in
/// "app-gnome-player-4711.scope"; 0 for other units.
pid_t processOfScope(std::string_view unit);

/// The login session of the process; empty if it belongs to none, such as processes started by the
/// user's service manager.
std::string loginSession(std::string_view controlGroups);

/// The part of a snap, or empty: "part" for "snap.name.part-….scope".
std::string snapPart(std::string_view controlGroups);

} // namespace platform
