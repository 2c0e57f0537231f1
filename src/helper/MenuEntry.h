#pragma once

#include <QString>
#include <QVariantMap>

#include <cstdint>
#include <vector>

/// What an entry of the tray menu does when it is chosen.
struct MenuCommand {
    enum class Kind : std::uint8_t {
        none,
        toggleOutputMute,
        toggleProgramMute,
        setProgramVolume,
        muteAll,
        openWindow,
        preferences,
        quit,
    };

    Kind kind = Kind::none;
    QString program = {}; ///< the path of its bus object
    int percent = 0;

    bool operator==(const MenuCommand&) const = default;
};

/// An entry of the tray menu with what is below it. The properties are those of
/// com.canonical.dbusmenu: "label", "enabled", "toggle-state" and so on.
struct MenuEntry {
    int id = 0; ///< that of the menu itself is 0
    QVariantMap properties = {};
    MenuCommand command = {};
    std::vector<MenuEntry> children = {};
};

/// The entry of that id in the tree; null if there is none.
[[nodiscard]] const MenuEntry* findEntry(const MenuEntry& tree, int id) noexcept;

/// Whether two trees have the same entries, whatever their properties.
[[nodiscard]] bool hasSameEntries(const MenuEntry& one, const MenuEntry& other) noexcept;
