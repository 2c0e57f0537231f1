#include "model/PendingPluginReports.h"

#include <algorithm>
#include <utility>

using platform::MonotonicClock;

namespace {

constexpr std::size_t bound = 256;
constexpr std::chrono::minutes lifetime{1};

template <typename Entries>
auto find(Entries& entries, std::uint32_t pid) {
    return std::ranges::find(entries, pid, [](const auto& entry) { return entry.pid; });
}

template <typename Entries>
void append(Entries& entries, typename Entries::value_type entry) {
    if (entries.size() == bound)
        entries.pop_front();
    entries.push_back(std::move(entry));
}

} // namespace

void PendingPluginReports::keep(std::uint32_t pid, const ProgramSetting& setting) {
    std::erase_if(kept_, [pid](const Kept& each) { return each.pid == pid; });
    append(kept_, Kept{pid, setting, MonotonicClock::now() + lifetime});
}

void PendingPluginReports::offer(
    const std::function<bool(std::uint32_t pid, const ProgramSetting&)>& isUsed) {
    while (!kept_.empty() && kept_.front().end <= MonotonicClock::now())
        kept_.pop_front();
    std::erase_if(kept_, [&](const Kept& each) { return isUsed(each.pid, each.setting); });
}

void PendingPluginReports::setReason(std::uint32_t pid, const QString& reason) {
    const auto found = find(reasons_, pid);
    if (reason.isEmpty() && found != reasons_.end())
        reasons_.erase(found);
    else if (found != reasons_.end())
        found->text = reason;
    else if (!reason.isEmpty())
        append(reasons_, Reason{pid, reason, false});
}

QString PendingPluginReports::reason(std::uint32_t pid) const {
    const auto found = find(reasons_, pid);
    return found != reasons_.end() ? found->text : QString();
}

void PendingPluginReports::forgetGone(const std::function<bool(std::uint32_t pid)>& isKnown) {
    std::erase_if(reasons_, [&](Reason& reason) {
        const bool wasKnown = std::exchange(reason.wasKnown, isKnown(reason.pid));
        return wasKnown && !reason.wasKnown;
    });
}

void PendingPluginReports::clear() {
    kept_.clear();
    reasons_.clear();
}
