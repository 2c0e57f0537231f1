#include "plugin/memory/RememberedVolumes.h"

#include "comm/MVCommMessages.h"

#include <algorithm>
#include <utility>

namespace {

ProgramSetting settingIn(const Preferences& preferences, const std::string& key) {
    const auto found = preferences.programs.find(key);
    return found != preferences.programs.end() ? found->second : ProgramSetting{};
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

/// Applies the changes between two readings to `preferences`.
void followChanges(Preferences& preferences, const Preferences& last, const Preferences& next) {
    for (const std::string& key : differencesOf(last, next)) {
        if (next.programs.contains(key))
            preferences.programs[key] = next.programs.at(key);
        else
            preferences.programs.erase(key);
    }
    const auto follow = [&](auto member) {
        if (next.*member != last.*member)
            preferences.*member = next.*member;
    };
    follow(&Preferences::written);
    follow(&Preferences::ignored);
    follow(&Preferences::language);
    follow(&Preferences::seen);
    follow(&Preferences::forNew);
    follow(&Preferences::file);
}

/// The change for a program that should have `setting`.
WantedVolume differenceTo(const ProgramSetting& setting,
                          const RememberedVolumes::Program& program) {
    const ProgramSetting present = settingOf(program.wanted).clamped();
    WantedVolume change;
    if (present.percent != setting.percent)
        change.gain = gainOfPercent(setting.percent);
    if (present.muted != setting.muted)
        change.muted = setting.muted;
    return change;
}

} // namespace

std::vector<RememberedVolumes::Consequence>
RememberedVolumes::read(Preferences reading, std::span<const Program> programs, TimePoint now) {
    forgetOld(now);
    const bool isFirst = !inFile_;
    const Preferences before = preferences_;
    if (!note(std::move(reading))) {
        forgetWhatIsWritten();
        return {};
    }
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
        Consequence consequence = consequenceFor(program, before, changeFor(program, before));
        if (isFirst)
            consequence.forNext = std::exchange(consequence.wanted, {});
        consequences.push_back(consequence);
    }
    clearPendingResets(programs);
    return consequences;
}

/// Whether the reading counts: neither while the application tells more, nor when all that it could
/// contain is older than the application's message.
bool RememberedVolumes::note(Preferences reading) {
    const bool counts = !isTold_ && (inFile_ || !wasTold_);
    if (counts)
        followChanges(preferences_, inFile_.value_or(Preferences{}), reading);
    inFile_ = std::move(reading);
    return counts;
}

RememberedVolumes::Outcome RememberedVolumes::told(const ApplicationPreferences& word,
                                                   std::span<const Program> programs,
                                                   TimePoint now) {
    forgetOld(now);
    const bool isMeeting = !std::exchange(isTold_, true);
    wasTold_ = true;
    const std::vector<ProgramSetting> settingsBefore = settingsOf(programs);
    moveTo(word.preferences.file);
    const Preferences before = std::exchange(preferences_, word.preferences);
    ignoreNewly(before);
    takeNews(word, programs, now);
    Outcome outcome;
    if (isMeeting)
        outcome.newer = takeNewer();
    for (std::size_t i = 0; i < programs.size(); ++i) {
        WantedVolume change;
        if (word.news.contains(settingsKey(programs[i].name)))
            change = newsFor(programs[i]);
        else if (isMeeting)
            change = restoredFor(programs[i], settingsBefore[i]);
        outcome.consequences.push_back(consequenceFor(programs[i], before, change));
        outcome.consequences.back().restored =
            isMeeting && !word.news.contains(settingsKey(programs[i].name));
    }
    clearPendingResets(programs);
    return outcome;
}

/// Values for an application with another file do not apply to this one.
void RememberedVolumes::moveTo(const std::string& file) {
    if (file == file_)
        return;
    file_ = file;
    inFile_.reset();
    std::erase_if(latest_, [](const auto& entry) { return !entry.second.unreported; });
}

void RememberedVolumes::applicationChanged(bool isThere) {
    isTold_ = false;
    if (isThere)
        commands_.clear(); // of the one before
}

void RememberedVolumes::forgetOld(TimePoint now) {
    std::erase_if(commands_,
                  [now](const Command& each) { return now - each.time >= commandSilence; });
    std::erase_if(reports_, [now](const Report& each) { return now - each.time >= longestEcho; });
    std::erase_if(news_, [now](const auto& each) { return now - each.second >= newsLifetime; });
}

bool RememberedVolumes::isSilenced(const std::string& key) const {
    return std::ranges::any_of(commands_, [&](const Command& each) { return each.key == key; });
}

void RememberedVolumes::clearPendingResets(std::span<const Program> programs) {
    for (const Program& program : programs)
        pendingResets_.erase(settingsKey(program.name));
}

/// Of those that are ignored from now on, nothing counts any more but what we owe them.
void RememberedVolumes::ignoreNewly(const Preferences& before) {
    if (preferences_.ignored == before.ignored)
        return;
    auto keys = pendingResets_;
    for (const auto& [key, setting] : before.programs)
        keys.insert(key);
    for (const auto& [key, latest] : latest_)
        keys.insert(key);
    for (const std::string& key : keys) {
        const std::string_view name = checkinNameOfKey(key);
        if (!isIgnored(name)) {
            pendingResets_.erase(key);
            continue;
        }
        if (before.ignored.contains(name))
            continue;
        WantedVolume wanted = wantedBy(settingIn(before, key));
        wanted.merge(latestOf(key));
        const auto latest = latest_.find(key);
        const bool isOurs =
            before.programs.contains(key) || (latest != latest_.end() && latest->second.ours);
        if (isOurs && !settingOf(wanted).isPlain())
            pendingResets_.insert(key);
        latest_.erase(key);
    }
}

/// A newer entry of the preferences takes the place of what was the latest.
void RememberedVolumes::updateLatest(const std::string& key, const ProgramSetting& setting) {
    if (isSilenced(key) || std::ranges::any_of(reports_, [&](const Report& each) {
            return each.key == key && each.setting.clamped() == setting;
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
    if (inFile_->file != file_)
        return; // a copy may be older
    std::erase_if(latest_, [this](const auto& entry) {
        const bool isProgram = checkinNameOfKey(entry.first) == entry.first;
        // Full volume has no entry, but the program is known.
        const auto holdsIt = [&](const Preferences& preferences) {
            return (preferences.programs.contains(entry.first) ||
                    (isProgram && preferences.seen.contains(entry.first))) &&
                   settingIn(preferences, entry.first) == settingOf(entry.second.wanted);
        };
        return !entry.second.unreported && holdsIt(*inFile_) && holdsIt(preferences_);
    });
}

/// A command is newer than the word that was on its way. What is set for a program that has left
/// comes by the word only.
void RememberedVolumes::takeNews(const ApplicationPreferences& word,
                                 std::span<const Program> programs, TimePoint now) {
    const auto isCommanded = [&](const std::string& key) {
        return std::ranges::any_of(commands_, [&](const Command& command) {
            return command.key == key &&
                   std::ranges::find(programs, command.pid, &Program::pid) != programs.end();
        });
    };
    for (const std::string& key : word.news) {
        const bool isForgotten =
            !preferences_.seen.contains(key) && !preferences_.programs.contains(key);
        if (isForgotten) {
            latest_.erase(key);
            news_.erase(key);
        } else if (!isIgnored(checkinNameOfKey(key)) && !isCommanded(key)) {
            latest_[key] = {.wanted = wantedBy(settingIn(preferences_, key)), .ours = true};
            news_[key] = now;
        }
    }
}

bool RememberedVolumes::isNews(std::string_view name, TimePoint now) const {
    const auto news = news_.find(settingsKey(name));
    return news != news_.end() && now - news->second < newsLifetime && !isIgnored(name);
}

/// Values in the reply need not be reported separately.
NamedSettings RememberedVolumes::takeNewer() {
    NamedSettings newer;
    for (auto& [key, latest] : latest_) {
        if (isIgnored(checkinNameOfKey(key)))
            continue;
        const ProgramSetting setting = settingOf(of(checkinNameOfKey(key))).clamped();
        if (setting != settingIn(preferences_, key))
            newer.emplace_back(key, setting);
        latest.unreported = false;
    }
    return newer;
}

RememberedVolumes::Consequence RememberedVolumes::consequenceFor(const Program& program,
                                                                 const Preferences& before,
                                                                 const WantedVolume& change) const {
    Consequence consequence;
    consequence.ignored = isIgnored(program.name, program.former);
    if (consequence.ignored)
        consequence.reset = pendingResets_.contains(settingsKey(program.name));
    else if (before.isIgnored(program.name, program.former))
        consequence.wanted = of(program.name, program.former);
    else
        consequence.wanted = change;
    return consequence;
}

/// What a reading asks of a program.
WantedVolume RememberedVolumes::changeFor(const Program& program, const Preferences& before) const {
    const std::string key = settingsKey(program.name);
    const ProgramSetting setting = settingIn(preferences_, key);
    if (setting == settingIn(before, key))
        return {};
    const auto isOfProgram = [&](const auto& each) { return each.pid == program.pid; };
    if (std::ranges::any_of(commands_, isOfProgram) ||
        std::ranges::any_of(reports_, [&](const Report& each) {
            return isOfProgram(each) && each.setting.clamped() == setting;
        }))
        return {};
    return differenceTo(setting, program);
}

/// The change for the program that follows from a user's setting in the application's news.
WantedVolume RememberedVolumes::newsFor(const Program& program) const {
    const std::string key = settingsKey(program.name);
    if (isSilenced(key))
        return {};
    // One that was forgotten begins anew when it comes again. Until then its slider shows this.
    const auto latest = latest_.find(key);
    return differenceTo(
        latest != latest_.end() ? settingOf(latest->second.wanted) : ProgramSetting{}, program);
}

/// The change for the program that follows from the application's stored setting, where ours was
/// `before`.
WantedVolume RememberedVolumes::restoredFor(const Program& program,
                                            const ProgramSetting& before) const {
    const ProgramSetting setting = settingOf(of(program.name, program.former));
    if (setting == before || isSilenced(settingsKey(program.name)))
        return {};
    WantedVolume change = differenceTo(setting, program);
    const ProgramSetting present = settingOf(program.wanted).clamped();
    if (present.percent < std::min(before.percent, setting.percent))
        change.gain.reset();
    if (present.muted && !before.muted && !setting.muted)
        change.muted.reset();
    return change;
}

std::vector<ProgramSetting> RememberedVolumes::settingsOf(std::span<const Program> programs) const {
    std::vector<ProgramSetting> settings;
    for (const Program& program : programs)
        settings.push_back(settingOf(of(program.name, program.former)));
    return settings;
}

WantedVolume RememberedVolumes::latestOf(const std::string& key) const {
    const auto latest = latest_.find(key);
    return latest != latest_.end() ? latest->second.wanted : WantedVolume{};
}

WantedVolume RememberedVolumes::of(std::string_view name, std::string_view former) const {
    return isIgnored(name, former) ? WantedVolume{} : evenIfIgnored(name, former);
}

WantedVolume RememberedVolumes::evenIfIgnored(std::string_view name,
                                              std::string_view former) const {
    const std::string key = settingsKey(name);
    // A session manager would else restore what some other program of its kind had.
    WantedVolume wanted = preferences_.written && name != kMVCommNotificationSoundsName
                              ? wantedBy(preferences_.settingOfUnset(key, settingsKey(former)))
                              : WantedVolume{};
    if (const auto found = preferences_.programs.find(key); found != preferences_.programs.end())
        wanted = wantedBy(found->second);
    wanted.merge(latestOf(key));
    return wanted;
}

bool RememberedVolumes::takePendingReset(std::string_view name) {
    return isIgnored(name) && pendingResets_.erase(settingsKey(name)) > 0;
}

void RememberedVolumes::commanded(const Program& program, const WantedVolume& change,
                                  TimePoint now) {
    forgetOld(now);
    const std::string key = settingsKey(program.name);
    std::erase_if(commands_, [&](const Command& each) { return each.pid == program.pid; });
    commands_.push_back({program.pid, key, now});
    if (isIgnored(program.name, program.former))
        return;
    Latest& latest = latest_[key];
    latest.wanted.merge(change);
    latest.ours = true;
}

std::optional<ProgramSetting> RememberedVolumes::changedElsewhere(const Program& program,
                                                                  const WantedVolume& before,
                                                                  bool connected, TimePoint now) {
    if (isIgnored(program.name, program.former) || settingOf(before) == settingOf(program.wanted))
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
