#pragma once

#include "settings/ProgramSetting.h"

#include <QString>
#include <QVariantMap>

#include <optional>

/// The stored settings of all programs: volume and mute, by displayed name. Only settings other
/// than 100 percent and unmuted are stored; a missing program has these. Programs with the same
/// name share their settings. Any thread, one at a time.
class AppPreferences {
  public:
    AppPreferences() = default;

    /// Loads them from the preferences. Values of the wrong type count as missing, a volume out of
    /// range is clamped; unknown keys are kept.
    explicit AppPreferences(const QVariant& stored);

    /// In tidy form, for the preferences.
    [[nodiscard]] const QVariantMap& dictionary() const noexcept { return apps_; }

    /// The percent, 0 to 100, as it is stored, and without its fraction.
    [[nodiscard]] float volume(const QString& displayName) const;
    [[nodiscard]] ProgramSetting setting(const QString& displayName) const;

    /// Whether the program has settings other than the default.
    [[nodiscard]] bool contains(const QString& displayName) const;

    /// Each clamps.
    void set(const QString& displayName, const ProgramSetting& setting);
    void setPercent(const QString& displayName, int percent);
    void setMuted(const QString& displayName, bool muted);
    void remove(const QString& displayName);

    /// One program's dictionary without default values; nothing if it is empty then.
    [[nodiscard]] static std::optional<QVariantMap> tidyAppPref(QVariantMap preferences);

    /// The key of a name: its form in a property list, so that names with characters that XML
    /// cannot represent are found again.
    static QString keyForDisplayName(const QString& displayName);

  private:
    QVariantMap preferencesOf(const QString& displayName) const;
    void set(const QString& displayName, const QString& key, const QVariant& value);

    QVariantMap apps_;
};
