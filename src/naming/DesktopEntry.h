#pragma once

#include "naming/ProgramCommand.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

class ProgramFiles;

/// The environment in which desktop entries are read.
struct DesktopEnvironment {
    /// The languages of texts, the preferred first, as in LANGUAGE: "de_AT:de:en". Empty for
    /// English.
    std::string languages;

    /// The names of the desktop, as in XDG_CURRENT_DESKTOP.
    std::vector<std::string> desktops;

    /// With the desktops that the environment names.
    static DesktopEnvironment current(std::string languages);
};

/// The content of an application's desktop entry. The texts are as in the file and not trusted.
struct DesktopEntry {
    std::string id;   ///< without ".desktop"; with the name of a subfolder in front
    std::string path; ///< the file
    std::string name; ///< in the user's language
    std::string icon; ///< a name in the icon theme, or a path; empty if it has none
    ProgramCommand command;

    /// The paths of the command's program and script, links resolved. Empty if there are none.
    std::string program;
    std::string script;

    std::string windowClass; ///< StartupWMClass
    std::string flatpak;     ///< the flatpak that it starts
    std::string snap;        ///< the snap that it starts, as "snap.name", and its part
    std::string snapPart;
    bool isShown = false;     ///< in the menus of this desktop
    bool isForPeople = false; ///< in the menus of any desktop

    /// Whether the program is a terminal, an editor, a game launcher or a file manager.
    bool startsOthers = false;
    bool programIsScript = false; ///< the program is a script that starts something else
};

/// Reads the entry with this id from a file. Nothing if it is damaged, not an application, hidden,
/// or if its TryExec program is not installed. Any thread.
[[nodiscard]] std::optional<DesktopEntry> readDesktopEntry(const std::string& path, std::string id,
                                                           const DesktopEnvironment& environment,
                                                           const ProgramFiles& files);
