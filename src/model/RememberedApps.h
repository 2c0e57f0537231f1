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

/// What is remembered of programs, by the names that are displayed and whether they run or not, for
/// who has no item to set it at. Main thread only.
class RememberedApps {
  public:
    /// The controller and what it remembers by; all must outlive the object. `changed` is called
    /// after what it remembers has become another.
    RememberedApps(AppVolumeController& controller, AppPreferences& preferences, SeenApps& seen,
                   std::function<void()> changed);

    /// Every program that has ever been seen or set, by name.
    QList<NamedSetting> all() const;

    ProgramSetting of(const QString& displayName) const;

    /// Also sets all that one that is running has, as its item would. Clamps.
    void set(const QString& displayName, const ProgramSetting& setting);

    /// Remembers what was set elsewhere, and touches no record. Clamps.
    void keep(const QString& displayName, const ProgramSetting& setting);

    /// Takes over what the plug-in has of a program already.
    void learn(const NamedSetting& newer);

    /// Has a program be as if it had never been seen; one that is running goes to full volume, not
    /// muted. False when nothing was remembered.
    bool forget(const QString& displayName);

    /// The percent that a program begins with that checks in and has never been seen or set;
    /// nothing when it keeps full volume. A change is for programs to come.
    std::optional<int> defaultVolume() const;
    void setDefaultVolume(std::optional<int> percent);

  private:
    MVCommAppValue* recordOf(const QString& displayName) const;

    AppVolumeController& controller_;
    AppPreferences& preferences_;
    SeenApps& seen_;
    const std::function<void()> changed_;
};
