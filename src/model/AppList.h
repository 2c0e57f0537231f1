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

/// The records of all programs that have an item, in display order: the system's sound effects,
/// then the others sorted by their displayed names, in the order of the user's language and
/// ignoring case; equal names keep their order.
///
/// Programs come from two sources: connected programs, and running ones with windows. Merge both,
/// one after the other, and then call settle() to update the list. A name has one record, created
/// from the source that was merged first, and keeps it while either source has the name. Ignored
/// names have none. Main thread only.
class AppList {
  public:
    struct Rules {
        std::function<bool(const QString& processName)> isIgnored;
        /// Applies the stored settings to a record.
        std::function<void(MVCommAppValue&)> restore;
    };

    /// A program with windows that was started or ended since the previous merge.
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

    /// The same, without the program of process `own`. Returns the changes since the last call, in
    /// order; none on the first call. A launch counts only if there was no record.
    QList<Change> mergeRunningApps(QList<RunningApplication> running, std::uint32_t own);

    /// Removes records that are in no source or are ignored, updates the process of each, restores
    /// the settings and sorts. A record keeps its process while a connection of its name has it;
    /// otherwise it gets that of the first such connection, else that of a running program of its
    /// name. After a change of process it is silent, and has the new process's path and icon.
    void settle();

    /// Updates each record's icon from the workspace.
    void updateIcons();

    /// In display order; owned by the list, valid until settle().
    [[nodiscard]] const QList<MVCommAppValue*>& apps() const noexcept { return apps_; }

    /// The first record of that process; -1 if there is none.
    [[nodiscard]] qsizetype indexOfPid(std::uint32_t pid) const {
        return indexOfPid_.value(pid, -1);
    }

    [[nodiscard]] bool contains(const MVCommAppValue* app) const { return apps_.contains(app); }

    /// The processes of the connections with that name.
    [[nodiscard]] QList<std::uint32_t> connectedPids(const QString& processName) const;

    /// The path of the first of these processes; or empty.
    [[nodiscard]] QString connectedPath(const QString& processName) const;

    /// Whether that process has a connection, with or without a record.
    [[nodiscard]] bool isConnected(std::uint32_t pid) const;

    /// The record for the connection of that process, whether it is the record's own process or
    /// another one of its name; else the first record of that process; null if there is none.
    [[nodiscard]] MVCommAppValue* appOfProcess(std::uint32_t pid) const;

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
