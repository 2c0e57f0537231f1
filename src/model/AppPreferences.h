#pragma once

#include "settings/ProgramSetting.h"

#include <QString>
#include <QVariantMap>

#include <optional>

/// What is remembered of every program that has ever been adjusted: volume and mute, by the name
/// that is displayed. Only what differs from 100 percent and unmuted is kept, so a program that is
/// not there has just that. Programs of one name share their settings. Any thread, one at a time.
class AppPreferences {
  public:
    AppPreferences() = default;

    /// From what the preferences hold. Of another type than it should be counts as not there, a
    /// volume out of range as its end; keys that are not known stay.
    explicit AppPreferences(const QVariant& stored);

    /// Tidy; for the preferences.
    const QVariantMap& dictionary() const noexcept { return apps_; }

    /// The percent, 0 to 100, as it is stored, and without its fraction.
    float volume(const QString& displayName) const;
    ProgramSetting setting(const QString& displayName) const;

    /// Whether it differs from what a program has that is not there.
    bool contains(const QString& displayName) const;

    /// Each clamps.
    void set(const QString& displayName, const ProgramSetting& setting);
    void setPercent(const QString& displayName, int percent);
    void setMuted(const QString& displayName, bool muted);
    void remove(const QString& displayName);

    /// One program's dictionary without what need not be kept; nothing when nothing is left.
    static std::optional<QVariantMap> tidyAppPref(QVariantMap preferences);

    /// The key of a name: what a property list makes of it, so that a program whose name holds what
    /// XML cannot is found again.
    static QString keyForDisplayName(const QString& displayName);

  private:
    QVariantMap preferencesOf(const QString& displayName) const;
    void set(const QString& displayName, const QString& key, const QVariant& value);

    QVariantMap apps_;
};
