#pragma once

#include <QString>
#include <QVariantMap>

/// The keys of the program's preferences, with their types and defaults. Keys are spelled only
/// here.
namespace PreferenceKeys {

inline const QString disabledCharacterPalette =
    QStringLiteral("NSDisabledCharacterPaletteMenuItem");
inline const QString showInMenuBar = QStringLiteral("ShowInMenuBar");             ///< boolean
inline const QString useColorMenuBarIcon = QStringLiteral("UseColorMenuBarIcon"); ///< boolean
inline const QString disableSoundEffects = QStringLiteral("DisableSoundEffects"); ///< boolean

/// Number, registered for other readers; not the volume of a program.
inline const QString volume = QStringLiteral("Volume");

/// Arrays of texts: the names of the built-in entries of the ignore list that are switched off, and
/// the user's own names. Absent if there are none.
inline const QString disabledBuiltInIgnoredApps = QStringLiteral("DisabledBuiltInIgnoredApps");
inline const QString customIgnoredApps = QStringLiteral("CustomIgnoredApps");

/// Dictionary: maps a program's displayed name to a dictionary with a number, percent, and a
/// boolean; see AppPreferences.
inline const QString apps = QStringLiteral("Apps");
inline const QString appVolume = QStringLiteral("Volume");
inline const QString appMute = QStringLiteral("Mute");

/// Array of texts: the displayed names of programs that have been seen, see SeenApps. Absent if
/// there are none.
inline const QString seenApps = QStringLiteral("SeenApps");

/// Number: the percent at which new programs start. Absent: full volume.
inline const QString newAppVolume = QStringLiteral("NewAppVolume");

/// Text: the frame of the volume window, "x y width height".
inline const QString mainWindowFrame = QStringLiteral("MainWindow");

/// Boolean: the volume window is maximised. Absent if it is not.
inline const QString mainWindowMaximized = QStringLiteral("MainWindowMaximized");

/// Boolean: more contrast, whatever the desktop's setting is. Absent: false.
inline const QString moreContrast = QStringLiteral("MoreContrast");

/// Booleans: whether programs leave reports when they crash, and whether the application offers to
/// send those.
inline const QString writeCrashReports = QStringLiteral("WriteCrashReports");
inline const QString offerCrashReports = QStringLiteral("OfferCrashReports");

/// Array of dictionaries: the reports that have been offered, see QNCrashReporter. Text: the e-mail
/// address that was given last.
inline const QString crashReports = QStringLiteral("QNCrashReporter_Reports");
inline const QString crashReportEmail = QStringLiteral("QNCrashReporter_Email");

/// Text: the path of the bundle that was started last.
inline const QString lastLaunchPath = QStringLiteral("LastLaunchPath");

/// Boolean: the installed plug-in has been set up to start with this user's sessions. What the user
/// changes there afterwards stays.
inline const QString pluginIsSetUp = QStringLiteral("PluginIsSetUp");

/// Text: the user's language, "de_DE", in which the audio plug-in names programs. Written at each
/// start, before a plug-in can connect.
inline const QString messageLanguage = QStringLiteral("MessageLanguage");

/// The default values.
QVariantMap defaults();

} // namespace PreferenceKeys
