#pragma once

#include "comm/MVCommConnectedProcess.h"
#include "workspace/Workspace.h"

#include <QCollator>
#include <QHash>
#include <QList>
#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class MVCommAppValue;

/// The records of all programs that have an item, in the order in which they are shown: the
/// system's sound effects, then the others by their displayed names, as the person's language
/// orders them and without regard to case; what is equal there stays as it came.
///
/// Two sources name programs: those that are connected, and those that run with windows. Merging
/// one after the other, and then settling, makes the list what both name now. A name has one
/// record, made from the source that was merged first, and keeps it while either source has the
/// name. Ignored names have none. Main thread only.
class AppList {
  public:
    struct Rules {
        std::function<bool(const QString& processName)> isIgnored;
        /// Gives a record the settings that are remembered.
        std::function<void(MVCommAppValue&)> restore;
    };

    /// A program with windows that has come or gone since the merge before.
    struct Change {
        enum Kind { launched, launchedIgnored, quit } kind;
        QString name;

        bool operator==(const Change&) const = default;
    };

    /// `workspace` must outlive the list.
    AppList(const Workspace& workspace, Rules rules);
    ~AppList();
    AppList(const AppList&) = delete;
    AppList& operator=(const AppList&) = delete;

    /// Adds records for names that have none.
    void mergeConnections(QList<MVCommConnectedProcess> connections);

    /// The same, without the program of process `own`. Answers what has changed since the last
    /// time, in order, nothing at the first time; a launch counts only where there was no record.
    QList<Change> mergeRunningApps(QList<RunningApplication> running, std::uint32_t own);

    /// Removes records that no source names or that are ignored, gives each the process that it
    /// stands for now, restores its settings and sorts. A record keeps its process while a
    /// connection of its name has that, else gets the first such connection's, else that of a
    /// running program of its name. After a change of process it is silent, and has that one's path
    /// and icon.
    void settle();

    /// Has each record take the icon that the workspace has for it by now.
    void updateIcons();

    /// In order; owned by the list, until it is settled.
    const QList<MVCommAppValue*>& apps() const noexcept { return apps_; }

    /// The first one of that process; -1 when there is none.
    qsizetype indexOfPid(std::uint32_t pid) const { return indexOfPid_.value(pid, -1); }

    bool contains(const MVCommAppValue* app) const { return apps_.contains(app); }

    /// The processes that the connections of that name stand for.
    QList<std::uint32_t> connectedPids(const QString& processName) const;

    /// The path of the first of these processes; or empty.
    QString connectedPath(const QString& processName) const;

    /// Whether a connection stands for that process, with a record or without.
    bool isConnected(std::uint32_t pid) const;

    /// The record of the connection that stands for that process, be it the record's own or that of
    /// another program of its name; else the first one of that process; null when there is none.
    MVCommAppValue* appOfProcess(std::uint32_t pid) const;

  private:
    struct Entry {
        std::unique_ptr<MVCommAppValue> record;
        QCollatorSortKey key;
    };
    struct Process {
        std::uint32_t pid;
        QString path;
    };
    using Processes = QHash<QString, QList<Process>>;

    void add(std::unique_ptr<MVCommAppValue> record);
    void removeUnnamed();
    static bool contains(const QList<Process>& processes, std::uint32_t pid);
    bool chooseProcess(MVCommAppValue& record) const;
    void sort();
    void index();

    const Workspace& workspace_;
    const Rules rules_;
    QCollator collator_;
    std::vector<Entry> entries_;
    QHash<QString, MVCommAppValue*> byName_;
    Processes connected_; // by process name
    Processes running_;   // likewise, without our own
    std::optional<QList<RunningApplication>> oldRunningApps_;
    QList<MVCommAppValue*> apps_;
    QHash<std::uint32_t, qsizetype> indexOfPid_;
};
