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

/// What a desktop entry of an application says. The texts are as in the file: anybody may have
/// written them.
struct DesktopEntry {
    std::string id;   ///< without ".desktop"; an entry in a subfolder has its name in front
    std::string path; ///< the file
    std::string name; ///< in the person's language
    std::string icon; ///< a name in the icon theme, or a path; empty when it has none
    ProgramCommand command;

    /// Where the command's program and script lie, links resolved. Empty when there are none.
    std::string program;
    std::string script;

    std::string windowClass; ///< StartupWMClass
    std::string flatpak;     ///< the flatpak that it starts
    std::string snap;        ///< the snap that it starts, as "snap.name", and its part
    std::string snapPart;
    bool isShown = false;     ///< in the menus of this desktop
    bool isForPeople = false; ///< in the menus of some desktop, whichever this is

    /// Whether the program is a terminal, an editor, a starter of games or a file manager.
    bool startsOthers = false;
    bool programIsScript = false; ///< the program is a script that starts something else
};

/// Reads the entry of the id from a file. Nothing for one that is damaged, is no application, is
/// hidden, or whose TryExec names a program that is not installed. Any thread.
std::optional<DesktopEntry> readDesktopEntry(const std::string& path, std::string id,
                                             const DesktopEnvironment& environment,
                                             const ProgramFiles& files);
