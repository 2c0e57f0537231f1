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

/// Notices programs that connect and have never been seen before. The system's sound effects are no
/// program. Main thread only.
class NewApps {
  public:
    /// Both must outlive the object.
    NewApps(SeenApps& seen, const AppPreferences& preferences)
        : seen_(seen), preferences_(preferences) {}

    /// The records of those that have connected since the last call, which have been seen from now
    /// on. Whoever was forgotten while it runs is new when it comes again.
    QList<MVCommAppValue*> take(const AppList& list);

    /// What one of these is to have by the rule that its plug-in follows too: what is remembered by
    /// the name that it had before more was known of it than its file, else what new programs begin
    /// with. Nothing when it has a setting, or full volume.
    std::optional<ProgramSetting> beginning(const AppList& list, const MVCommAppValue& app) const;

    /// The process names of those that were never seen or set, but whose former name is ignored.
    QStringList ignoredByFormerName(const AppList& list,
                                    const std::function<bool(const QString&)>& isIgnored) const;

  private:
    static QString formerName(const AppList& list, const MVCommAppValue& app);

    SeenApps& seen_;
    const AppPreferences& preferences_;
    QSet<QString> connected_; // process names, at the last call
};
