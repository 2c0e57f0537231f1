#include "plugin/memory/RememberedVolumes.h"

#include "comm/MVCommMessages.h"

#include <algorithm>
#include <utility>

namespace {

ProgramSetting settingIn(const Preferences& preferences, const std::string& key) {
    const auto found = preferences.programs.find(key);
    return found != preferences.programs.end() ? found->second : ProgramSetting{};
}

/// As the application keeps it.
ProgramSetting clamped(ProgramSetting setting) {
    setting.percent = std::clamp(setting.percent, 0, 100);
    return setting;
}

/// The names of all that either holds something else about.
std::vector<std::string> differencesOf(const Preferences& before, const Preferences& after) {
    std::vector<std::string> keys;
    for (const auto& [key, setting] : after.programs) {
        if (settingIn(before, key) != setting)
            keys.push_back(key);
    }
    for (const auto& [key, setting] : before.programs) {
        if (!after.programs.contains(key))
            keys.push_back(key);
    }
    return keys;
}

} // namespace

std::vector<RememberedVolumes::Consequence>
RememberedVolumes::read(Preferences preferences, std::span<const Program> programs, TimePoint now) {
    forgetOld(now);
    const bool isFirst = !std::exchange(hasRead_, true);
    const Preferences before = std::exchange(preferences_, std::move(preferences));
    if (!isFirst)
        ignoreNewly(before);
    for (const std::string& key : differencesOf(before, preferences_)) {
        if (!isFirst)
            updateLatest(key, settingIn(preferences_, key));
    }
    forgetUnseen(before);
    forgetWhatIsWritten();
    std::vector<Consequence> consequences;
    for (const Program& program : programs) {
        Consequence consequence = consequenceFor(program, before);
        if (isFirst)
            consequence.forNext = std::exchange(consequence.wanted, {});
        consequences.push_back(consequence);
    }
    for (const Program& program : programs)
        owed_.erase(settingsKey(program.name));
    return consequences;
}

void RememberedVolumes::forgetOld(TimePoint now) {
    std::erase_if(commands_,
                  [now](const Command& each) { return now - each.time >= commandSilence; });
    std::erase_if(reports_, [now](const Report& each) { return now - each.time >= longestEcho; });
}

/// Of those that are ignored from now on, nothing counts any more but what we owe them.
void RememberedVolumes::ignoreNewly(const Preferences& before) {
    if (preferences_.ignored == before.ignored)
        return;
    auto keys = owed_;
    for (const auto& [key, setting] : before.programs)
        keys.insert(key);
    for (const auto& [key, latest] : latest_)
        keys.insert(key);
    for (const std::string& key : keys) {
        const std::string_view name = checkinNameOfKey(key);
        if (!isIgnored(name)) {
            owed_.erase(key);
            continue;
        }
        if (before.ignored.contains(name))
            continue;
        WantedVolume wanted = settingIn(before, key).wanted();
        wanted.merge(latestOf(key));
        const auto latest = latest_.find(key);
        const bool isOurs =
            before.programs.contains(key) || (latest != latest_.end() && latest->second.ours);
        if (isOurs && !settingOf(wanted).isPlain())
            owed_.insert(key);
        latest_.erase(key);
    }
}

/// A newer entry of the preferences takes the place of what was the latest.
void RememberedVolumes::updateLatest(const std::string& key, const ProgramSetting& setting) {
    const auto isOfKey = [&key](const auto& each) { return each.key == key; };
    if (std::ranges::any_of(commands_, isOfKey) ||
        std::ranges::any_of(reports_, [&](const Report& each) {
            return isOfKey(each) && clamped(each.setting) == setting;
        }))
        return;
    latest_.erase(key);
    if (setting.isPlain() && !isIgnored(checkinNameOfKey(key)))
        latest_[key].wanted = kFullVolume; // which an absent entry does not say
}

/// A program that the application forgets is new when it comes again.
void RememberedVolumes::forgetUnseen(const Preferences& before) {
    for (const std::string& key : before.seen) {
        if (!preferences_.seen.contains(key) && !preferences_.programs.contains(key))
            latest_.erase(key);
    }
}

void RememberedVolumes::forgetWhatIsWritten() {
    std::erase_if(latest_, [this](const auto& entry) {
        const auto written = preferences_.programs.find(entry.first);
        return written != preferences_.programs.end() && !entry.second.unreported &&
               written->second == settingOf(entry.second.wanted);
    });
}

RememberedVolumes::Consequence RememberedVolumes::consequenceFor(const Program& program,
                                                                 const Preferences& before) const {
    Consequence consequence;
    const std::string key = settingsKey(program.name);
    consequence.ignored = isIgnored(program.name);
    if (consequence.ignored)
        consequence.freed = owed_.contains(key);
    else if (before.ignored.contains(program.name))
        consequence.wanted = of(program.name, program.former);
    else
        consequence.wanted = changeFor(program, key, before);
    return consequence;
}

WantedVolume RememberedVolumes::changeFor(const Program& program, const std::string& key,
                                          const Preferences& before) const {
    const ProgramSetting setting = settingIn(preferences_, key);
    if (setting == settingIn(before, key))
        return {};
    const auto isOfProgram = [&](const auto& each) { return each.pid == program.pid; };
    if (std::ranges::any_of(commands_, isOfProgram) ||
        std::ranges::any_of(reports_, [&](const Report& each) {
            return isOfProgram(each) && clamped(each.setting) == setting;
        }))
        return {};
    const ProgramSetting present = clamped(settingOf(program.wanted));
    WantedVolume change;
    if (present.percent != setting.percent)
        change.gain = gainOfPercent(setting.percent);
    if (present.muted != setting.muted)
        change.muted = setting.muted;
    return change;
}

WantedVolume RememberedVolumes::latestOf(const std::string& key) const {
    const auto latest = latest_.find(key);
    return latest != latest_.end() ? latest->second.wanted : WantedVolume{};
}

WantedVolume RememberedVolumes::of(std::string_view name, std::string_view former) const {
    return isIgnored(name) ? WantedVolume{} : evenIfIgnored(name, former);
}

WantedVolume RememberedVolumes::evenIfIgnored(std::string_view name,
                                              std::string_view former) const {
    const std::string key = settingsKey(name);
    // A session manager would else restore what some other program of its kind had.
    WantedVolume wanted = preferences_.written && name != kMVCommNotificationSoundsName
                              ? preferences_.settingOfUnset(key, settingsKey(former)).wanted()
                              : WantedVolume{};
    if (const auto found = preferences_.programs.find(key); found != preferences_.programs.end())
        wanted = found->second.wanted();
    wanted.merge(latestOf(key));
    return wanted;
}

bool RememberedVolumes::takeDebt(std::string_view name) {
    return isIgnored(name) && owed_.erase(settingsKey(name)) > 0;
}

void RememberedVolumes::commanded(const Program& program, const WantedVolume& change,
                                  TimePoint now) {
    forgetOld(now);
    const std::string key = settingsKey(program.name);
    std::erase_if(commands_, [&](const Command& each) { return each.pid == program.pid; });
    commands_.push_back({program.pid, key, now});
    if (isIgnored(program.name))
        return;
    Latest& latest = latest_[key];
    latest.wanted.merge(change);
    latest.ours = true;
}

std::optional<ProgramSetting> RememberedVolumes::changedElsewhere(const Program& program,
                                                                  const WantedVolume& before,
                                                                  bool connected, TimePoint now) {
    if (isIgnored(program.name) || settingOf(before) == settingOf(program.wanted))
        return std::nullopt;
    const std::string key = settingsKey(program.name);
    Latest& latest = latest_[key];
    latest.wanted.merge(program.wanted);
    latest.unreported = !connected;
    return connected ? std::optional(report(program.pid, key, program.wanted, now)) : std::nullopt;
}

std::optional<ProgramSetting> RememberedVolumes::connected(const Program& program, TimePoint now) {
    const std::string key = settingsKey(program.name);
    const auto latest = latest_.find(key);
    if (latest == latest_.end() || !std::exchange(latest->second.unreported, false))
        return std::nullopt;
    return report(program.pid, key, of(program.name, program.former), now);
}

ProgramSetting RememberedVolumes::report(std::uint32_t pid, const std::string& key,
                                         const WantedVolume& wanted, TimePoint now) {
    forgetOld(now);
    const ProgramSetting setting = settingOf(wanted);
    reports_.push_back({pid, key, setting, now});
    return setting;
}
