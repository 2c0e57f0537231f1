#include "model/AppList.h"

#include "model/MVCommAppValue.h"

#include <QLocale>
#include <QSet>

#include <algorithm>
#include <utility>

namespace {

/// A locale that knows no order beyond ASCII has the one that most languages share.
QLocale personsLocale() {
    const QLocale locale;
    return locale.language() == QLocale::C ? QLocale(QLocale::English) : locale;
}

QSet<QString> namesOf(const QList<RunningApplication>& applications) {
    QSet<QString> names;
    names.reserve(applications.size());
    for (const RunningApplication& each : applications)
        names.insert(each.localizedName);
    return names;
}

} // namespace

AppList::AppList(const Workspace& workspace, Rules rules)
    : workspace_(workspace), rules_(std::move(rules)), collator_(personsLocale()) {
    collator_.setCaseSensitivity(Qt::CaseInsensitive);
}

AppList::~AppList() = default;

void AppList::mergeConnections(QList<MVCommConnectedProcess> connections) {
    connected_.clear();
    connected_.reserve(connections.size());
    for (const MVCommConnectedProcess& each : std::as_const(connections)) {
        connected_[each.name].append({each.pid, each.path});
        if (!byName_.contains(each.name) && !rules_.isIgnored(each.name))
            add(MVCommAppValue::initWithApp(&each, workspace_));
    }
}

QList<AppList::Change> AppList::mergeRunningApps(QList<RunningApplication> running,
                                                 std::uint32_t own) {
    const bool isFirst = !oldRunningApps_;
    const auto old =
        std::exchange(oldRunningApps_, std::move(running)).value_or(QList<RunningApplication>());
    const QSet<QString> oldNames = namesOf(old);
    QList<Change> changes;
    running_.clear();
    for (const RunningApplication& each : std::as_const(*oldRunningApps_)) {
        if (each.pid == own)
            continue;
        const QString& name = each.localizedName;
        running_[name].append({each.pid, MVCommAppValue::pathOf(each)});
        if (byName_.contains(name))
            continue;
        const bool isIgnored = rules_.isIgnored(name);
        if (!isFirst && !oldNames.contains(name))
            changes.append({isIgnored ? Change::launchedIgnored : Change::launched, name});
        if (!isIgnored)
            add(MVCommAppValue::initWithRunningApp(each, workspace_));
    }
    const QSet<QString> newNames = namesOf(*oldRunningApps_);
    for (const RunningApplication& each : old) {
        if (!newNames.contains(each.localizedName))
            changes.append({Change::quit, each.localizedName});
    }
    return changes;
}

void AppList::settle() {
    removeUnnamed();
    QList<MVCommAppValue*> moved;
    for (const Entry& entry : entries_) {
        if (chooseProcess(*entry.record))
            moved.append(entry.record.get());
    }
    sort();
    index();
    // Observers find the list in order.
    for (MVCommAppValue* const record : std::as_const(moved)) {
        record->setActivity(0);
        record->updateIcon(workspace_);
    }
    for (MVCommAppValue* const record : std::as_const(apps_))
        rules_.restore(*record);
}

void AppList::updateIcons() {
    for (MVCommAppValue* const record : std::as_const(apps_))
        record->updateIcon(workspace_);
}

QList<std::uint32_t> AppList::connectedPids(const QString& processName) const {
    QList<std::uint32_t> pids;
    for (const Process& each : connected_.value(processName))
        pids.append(each.pid);
    return pids;
}

QString AppList::connectedPath(const QString& processName) const {
    const QList<Process> processes = connected_.value(processName);
    return processes.isEmpty() ? QString() : processes.first().path;
}

bool AppList::isConnected(std::uint32_t pid) const {
    return std::ranges::any_of(connected_,
                               [pid](const auto& processes) { return contains(processes, pid); });
}

MVCommAppValue* AppList::appOfProcess(std::uint32_t pid) const {
    const qsizetype index = indexOfPid(pid);
    MVCommAppValue* const first = index >= 0 ? apps_[index] : nullptr;
    if (first != nullptr && contains(connected_.value(first->processName()), pid))
        return first;
    for (auto each = connected_.cbegin(); each != connected_.cend(); ++each) {
        if (MVCommAppValue* const app = byName_.value(each.key()); app && contains(*each, pid))
            return app;
    }
    return first;
}

void AppList::add(std::unique_ptr<MVCommAppValue> record) {
    byName_.insert(record->processName(), record.get());
    const QCollatorSortKey key = collator_.sortKey(record->displayName());
    entries_.push_back({std::move(record), key});
}

void AppList::removeUnnamed() {
    std::erase_if(entries_, [this](const Entry& entry) {
        const QString& name = entry.record->processName();
        const bool isNamed = connected_.contains(name) || running_.contains(name);
        if (isNamed && !rules_.isIgnored(name))
            return false;
        byName_.remove(name);
        return true;
    });
}

bool AppList::contains(const QList<Process>& processes, std::uint32_t pid) {
    return std::ranges::find(processes, pid, &Process::pid) != processes.end();
}

/// Returns whether the process has changed.
bool AppList::chooseProcess(MVCommAppValue& record) const {
    auto processes = connected_.constFind(record.processName());
    if (processes == connected_.cend())
        processes = running_.constFind(record.processName());
    if (contains(*processes, record.pid()))
        return false;
    record.setProcess(processes->first().pid, processes->first().path);
    return true;
}

void AppList::sort() {
    const auto isBefore = [](const Entry& one, const Entry& other) {
        if (one.record->isBeeps() != other.record->isBeeps())
            return one.record->isBeeps();
        return one.key.compare(other.key) < 0;
    };
    // Mostly nothing has changed.
    if (!std::is_sorted(entries_.begin(), entries_.end(), isBefore))
        std::stable_sort(entries_.begin(), entries_.end(), isBefore);
}

void AppList::index() {
    apps_.clear();
    indexOfPid_.clear();
    apps_.reserve(static_cast<qsizetype>(entries_.size()));
    indexOfPid_.reserve(static_cast<qsizetype>(entries_.size()));
    for (const Entry& entry : entries_) {
        if (!indexOfPid_.contains(entry.record->pid()))
            indexOfPid_.insert(entry.record->pid(), apps_.size());
        apps_.append(entry.record.get());
    }
}
