#pragma once

#include "settings/ProgramSetting.h"

#include <QByteArray>
#include <QDBusArgument>
#include <QMetaType>
#include <QString>
#include <QStringList>

// What application and plug-in say to each other on the session bus.

/// The setting of a program, by the name that is displayed; (sib) on the bus.
struct NamedSetting {
    QString name;
    ProgramSetting setting;

    bool operator==(const NamedSetting&) const = default;
};

QDBusArgument& operator<<(QDBusArgument& argument, const NamedSetting& setting);
const QDBusArgument& operator>>(const QDBusArgument& argument, NamedSetting& setting);

/// To be called before a list of them is sent or taken.
void registerNamedSettings();

/// What the application remembers.
struct PreferencesMessage {
    /// A longer one, in bytes, is refused.
    static constexpr qsizetype longest = 1 << 20;

    QString file;           ///< where it is kept
    QByteArray preferences; ///< a property list, as the file holds it
    QStringList news;       ///< the names in it that a person has set since the plug-in last heard
};

Q_DECLARE_METATYPE(NamedSetting)
