#pragma once

#include "settings/PreferencesMessage.h"

#include <QList>
#include <QString>

#include <functional>
#include <optional>

class AppPreferences;
class AppVolumeController;
class MVCommAppValue;
class SeenApps;

/// The stored settings of programs by displayed name, whether they run or not, for callers without
/// an item. Main thread only.
class RememberedApps {
  public:
    /// The controller and its stored data; all must outlive the object. `changed` is called after
    /// the data has changed.
    RememberedApps(AppVolumeController& controller, AppPreferences& preferences, SeenApps& seen,
                   std::function<void()> changed);

    /// All programs that have ever been seen or set, sorted by name.
    [[nodiscard]] QList<NamedSetting> all() const;

    [[nodiscard]] ProgramSetting of(const QString& displayName) const;

    /// Also sets all that one that is running has, as its item would. Clamps.
    void set(const QString& displayName, const ProgramSetting& setting);

    /// Remembers what was set elsewhere, and touches no record. Clamps.
    void keep(const QString& displayName, const ProgramSetting& setting);

    /// Stores a setting that the plug-in already has.
    void learn(const NamedSetting& newer);

    /// Removes all data of a program, as if it had never been seen; a running one goes to full
    /// volume, not muted. False if nothing was stored.
    bool forget(const QString& displayName);

    /// The percent at which new programs start; nothing for full volume. A change only affects
    /// later programs.
    [[nodiscard]] std::optional<int> defaultVolume() const;
    void setDefaultVolume(std::optional<int> percent);

  private:
    MVCommAppValue* recordOf(const QString& displayName) const;

    AppVolumeController& controller_;
    AppPreferences& preferences_;
    SeenApps& seen_;
    const std::function<void()> changed_;
};
