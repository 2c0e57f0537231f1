#pragma once

#include "settings/ProgramSetting.h"

#include <QByteArray>
#include <QDBusArgument>
#include <QMetaType>
#include <QString>
#include <QStringList>

// The data that application and plug-in exchange on the session bus.

/// The setting of a program, by the name that is displayed; (sib) on the bus.
struct NamedSetting {
    QString name;
    ProgramSetting setting;

    bool operator==(const NamedSetting&) const = default;
};

QDBusArgument& operator<<(QDBusArgument& argument, const NamedSetting& setting);
const QDBusArgument& operator>>(const QDBusArgument& argument, NamedSetting& setting);

/// Call this before sending or receiving a list of them.
void registerNamedSettings();

/// The application's stored settings, as sent to the plug-in.
struct PreferencesMessage {
    /// The maximum size in bytes; longer messages are refused.
    static constexpr qsizetype longest = 1 << 20;

    QString file;           ///< the file that contains them
    QByteArray preferences; ///< a property list, as in the file
    QStringList news;       ///< the names in it that the user has changed since the last message
};

Q_DECLARE_METATYPE(NamedSetting)
