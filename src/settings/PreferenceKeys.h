#pragma once

#include <QString>
#include <QVariantMap>

/// The keys that the program keeps in its preferences, with their types and defaults: the one place
/// that spells them.
namespace PreferenceKeys {

inline const QString disabledCharacterPalette =
    QStringLiteral("NSDisabledCharacterPaletteMenuItem");
inline const QString showInMenuBar = QStringLiteral("ShowInMenuBar");             ///< boolean
inline const QString useColorMenuBarIcon = QStringLiteral("UseColorMenuBarIcon"); ///< boolean
inline const QString disableSoundEffects = QStringLiteral("DisableSoundEffects"); ///< boolean

/// Number, registered for who may look for it; no program's volume.
inline const QString volume = QStringLiteral("Volume");

/// Arrays of texts: the names of the built-in entries of the ignore list that are switched off, and
/// the person's own names. Absent when there are none.
inline const QString disabledBuiltInIgnoredApps = QStringLiteral("DisabledBuiltInIgnoredApps");
inline const QString customIgnoredApps = QStringLiteral("CustomIgnoredApps");

/// Dictionary: a program's displayed name to its own dictionary, which holds
/// a number, percent, and a boolean; see AppPreferences.
inline const QString apps = QStringLiteral("Apps");
inline const QString appVolume = QStringLiteral("Volume");
inline const QString appMute = QStringLiteral("Mute");

/// Array of texts: the displayed names of programs that have been seen, see SeenApps. Absent when
/// there are none.
inline const QString seenApps = QStringLiteral("SeenApps");

/// Number: the percent that a program gets that has never been seen. Absent: such a program keeps
/// full volume.
inline const QString newAppVolume = QStringLiteral("NewAppVolume");

/// Text: where the volume window was, "x y width height".
inline const QString mainWindowFrame = QStringLiteral("MainWindow");

/// Text: the path of the bundle that was started last.
inline const QString lastLaunchPath = QStringLiteral("LastLaunchPath");

/// Text: the language that the person reads, "de_DE"; the audio plug-in gives programs their names
/// in it. Written at each start, before a plug-in can connect.
inline const QString messageLanguage = QStringLiteral("MessageLanguage");

/// What holds where a person has set nothing.
QVariantMap defaults();

} // namespace PreferenceKeys
