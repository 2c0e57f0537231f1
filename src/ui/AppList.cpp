#include "ui/AppList.h"

#include "comm/MVCommAppValue.h"

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

QSet<QString> namesOf(const QList<platform::RunningApplication>& applications) {
    QSet<QString> names;
    names.reserve(applications.size());
    for (const platform::RunningApplication& each : applications)
        names.insert(each.localizedName);
    return names;
}

} // namespace

AppList::AppList(const platform::Workspace& workspace, Rules rules)
    : workspace_(workspace), rules_(std::move(rules)), collator_(personsLocale()) {
    collator_.setCaseSensitivity(Qt::CaseInsensitive);
}

AppList::~AppList() = default;

void AppList::mergeConnections(QList<MVCommConnectedProcess> connections) {
    connectedPids_.clear();
    connectedPids_.reserve(connections.size());
    for (const MVCommConnectedProcess& each : std::as_const(connections)) {
        connectedPids_[each.name].append(each.pid);
        if (!byName_.contains(each.name) && !rules_.isIgnored(each.name))
            add(MVCommAppValue::initWithApp(&each, workspace_));
    }
}

QList<AppList::Change> AppList::mergeRunningApps(QList<platform::RunningApplication> running,
                                                 std::uint32_t own) {
    const bool isFirst = !oldRunningApps_;
    const auto old = std::exchange(oldRunningApps_, std::move(running))
                         .value_or(QList<platform::RunningApplication>());
    const QSet<QString> oldNames = namesOf(old);
    QList<Change> changes;
    runningPids_.clear();
    for (const platform::RunningApplication& each : std::as_const(*oldRunningApps_)) {
        if (each.pid == own)
            continue;
        const QString& name = each.localizedName;
        runningPids_[name].append(each.pid);
        if (byName_.contains(name))
            continue;
        const bool isIgnored = rules_.isIgnored(name);
        if (!isFirst && !oldNames.contains(name))
            changes.append({isIgnored ? Change::launchedIgnored : Change::launched, name});
        if (!isIgnored)
            add(MVCommAppValue::initWithRunningApp(each, workspace_));
    }
    const QSet<QString> newNames = namesOf(*oldRunningApps_);
    for (const platform::RunningApplication& each : old) {
        if (!newNames.contains(each.localizedName))
            changes.append({Change::quit, each.localizedName});
    }
    return changes;
}

void AppList::settle() {
    removeUnnamed();
    QList<MVCommAppValue*> silenced;
    for (const Entry& entry : entries_) {
        if (choosePid(*entry.record))
            silenced.append(entry.record.get());
    }
    sort();
    index();
    // Observers find the list in order.
    for (MVCommAppValue* const record : std::as_const(silenced))
        record->setActivity(0);
    for (MVCommAppValue* const record : std::as_const(apps_))
        rules_.restore(*record);
}

QList<std::uint32_t> AppList::connectedPids(const QString& processName) const {
    return connectedPids_.value(processName);
}

bool AppList::isConnected(std::uint32_t pid) const {
    return std::ranges::any_of(connectedPids_,
                               [pid](const auto& pids) { return pids.contains(pid); });
}

MVCommAppValue* AppList::appOfProcess(std::uint32_t pid) const {
    const qsizetype index = indexOfPid(pid);
    MVCommAppValue* const first = index >= 0 ? apps_[index] : nullptr;
    if (first != nullptr && connectedPids_.value(first->processName()).contains(pid))
        return first;
    for (auto each = connectedPids_.cbegin(); each != connectedPids_.cend(); ++each) {
        if (MVCommAppValue* const app = byName_.value(each.key()); app && each->contains(pid))
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
        const bool isNamed = connectedPids_.contains(name) || runningPids_.contains(name);
        if (isNamed && !rules_.isIgnored(name))
            return false;
        byName_.remove(name);
        return true;
    });
}

/// Whether it is another process now.
bool AppList::choosePid(MVCommAppValue& record) const {
    auto pids = connectedPids_.constFind(record.processName());
    if (pids == connectedPids_.cend())
        pids = runningPids_.constFind(record.processName());
    if (pids->contains(record.pid()))
        return false;
    record.setPid(pids->first());
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
