#pragma once

#include "settings/ProgramSetting.h"

#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

class AppList;
class AppPreferences;
class MVCommAppValue;
class SeenApps;

/// Detects connecting programs that have never been seen before. The system's sound effects do not
/// count. Main thread only.
class NewApps {
  public:
    /// Both must outlive the object.
    NewApps(SeenApps& seen, const AppPreferences& preferences)
        : seen_(seen), preferences_(preferences) {}

    /// The records of those that have connected since the last call; they count as seen from now
    /// on. A program that was forgotten while running is new when it connects again.
    QList<MVCommAppValue*> take(const AppList& list);

    /// The initial settings of such a program, by the same rule as in the plug-in: those stored
    /// under its former name, which is derived from its file, else those of new programs. Nothing
    /// if it has settings, or starts at full volume.
    [[nodiscard]] std::optional<ProgramSetting> beginning(const AppList& list,
                                                          const MVCommAppValue& app) const;

    /// The process names of those that were never seen or set, but whose former name is ignored.
    [[nodiscard]] QStringList
    ignoredByFormerName(const AppList& list,
                        const std::function<bool(const QString&)>& isIgnored) const;

  private:
    static QString formerName(const AppList& list, const MVCommAppValue& app);

    SeenApps& seen_;
    const AppPreferences& preferences_;
    QSet<QString> connected_; // process names, at the last call
};
