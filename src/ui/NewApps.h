#pragma once

#include <QList>
#include <QSet>
#include <QString>

class AppList;
class MVCommAppValue;
class SeenApps;

/// Notices programs that connect and have never been seen before. The system's sound effects are no
/// program. Main thread only.
class NewApps {
  public:
    /// `seen` must outlive the object.
    explicit NewApps(SeenApps& seen) : seen_(seen) {}

    /// The records of those that have connected since the last call, which have been seen from now
    /// on. Whoever was forgotten while it runs is new when it comes again.
    QList<MVCommAppValue*> take(const AppList& list);

  private:
    SeenApps& seen_;
    QSet<QString> connected_; // process names, at the last call
};
