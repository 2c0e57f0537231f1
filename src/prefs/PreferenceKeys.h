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

/// What holds where a person has set nothing.
QVariantMap defaults();

} // namespace PreferenceKeys
