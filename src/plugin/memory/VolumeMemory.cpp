#include "plugin/memory/VolumeMemory.h"

#include "naming/ApplicationName.h"
#include "platform/base/SystemLog.h"
#include "plugin/effects/SoundEffects.h"
#include "plugin/identity/ProgramName.h"
#include "plugin/programs/ProgramTable.h"

#include <utility>
#include <vector>

using platform::LogPriority;
using platform::MonotonicClock;
using platform::systemLog;

namespace {

std::string formerNameOf(const ProgramProcess& process) {
    return checkinName(formerName(process.path));
}

RememberedVolumes::Program describedFor(const Program& program) {
    const ProgramProcess& process = program.process();
    return {process.pid, process.name, program.wanted(), formerNameOf(process)};
}

} // namespace

VolumeMemory::VolumeMemory(const PreferencesFile& file, ProgramTable& programs,
                           SoundEffects& effects, const ApplicationReports& reports,
                           std::function<void(const std::string&)> languageRead)
    : programs_(programs)
    , effects_(effects)
    , reports_(reports)
    , languageRead_(std::move(languageRead))
    , ownFile_(file.own())
    , preferences_(file, [this](const Preferences& preferences) { read(preferences); }) {}

void VolumeMemory::begin() {
    if (const auto preferences = preferences_.first())
        read(*preferences);
    if (fileThatCounts().empty())
        systemLog(LogPriority::info, "There are no preferences in %s yet", ownFile_.c_str());
    else
        systemLog(LogPriority::info, "Reading the preferences from %s", fileThatCounts().c_str());
}

std::optional<NamedSettings> VolumeMemory::told(const std::string& file, std::string_view bytes,
                                                std::span<const std::string> news) {
    auto preferences = parsePreferences(bytes);
    if (!preferences) {
        applicationChanged(false);
        return std::nullopt;
    }
    preferences->file = file;
    if (file != file_) {
        systemLog(LogPriority::info, "The application keeps its preferences in %s", file.c_str());
        file_ = file;
        preferences_.follow(file);
    }
    const auto outcome = remembered_.told({*std::move(preferences), {news.begin(), news.end()}},
                                          described(), MonotonicClock::now());
    carryOut(outcome.consequences);
    return outcome.newer;
}

WantedVolume VolumeMemory::of(const Program& program) const {
    return remembered_.evenIfIgnored(program.process().name, formerNameOf(program.process()));
}

void VolumeMemory::programAdded(Program& program) {
    const std::string& name = program.process().name;
    const std::string former = formerNameOf(program.process());
    if (remembered_.isIgnored(name, former))
        program.ignore(remembered_.takePendingReset(name));
    else
        program.recall(remembered_.of(name, former));
}

void VolumeMemory::programConnected(Program& program) {
    preferences_.readAgain();
    if (const auto setting = remembered_.connected(describedFor(program), MonotonicClock::now()))
        reports_.changedElsewhere(program.process().pid, *setting);
}

void VolumeMemory::programCommanded(Program& program, const WantedVolume& change) {
    remembered_.commanded(describedFor(program), change, MonotonicClock::now());
    if (&program == effects_.program())
        effects_.asked(program.isIgnored() ? change : program.wanted());
}

void VolumeMemory::programChangedElsewhere(Program& program, const WantedVolume& before) {
    if (const auto setting = remembered_.changedElsewhere(
            describedFor(program), before, program.isConnected(), MonotonicClock::now()))
        reports_.changedElsewhere(program.process().pid, *setting);
}

void VolumeMemory::found(Program& program, const WantedVolume& found) {
    const std::string& name = program.process().name;
    if (remembered_.isNews(name, MonotonicClock::now()))
        want(program, remembered_.of(name), WantReason::news);
    else
        program.found(found);
}

/// They have no stream yet that could be given anything.
void VolumeMemory::effectsAdded() {
    if (const WantedVolume all = effects_.program()->takeForNext(); !all.isEmpty())
        effects_.asked(all);
}

void VolumeMemory::read(const Preferences& preferences) {
    carryOut(remembered_.read(preferences, described(), MonotonicClock::now()));
}

std::vector<RememberedVolumes::Program> VolumeMemory::described() const {
    std::vector<RememberedVolumes::Program> programs;
    for (const auto& program : programs_.programs())
        programs.push_back(describedFor(*program));
    return programs;
}

void VolumeMemory::carryOut(const std::vector<RememberedVolumes::Consequence>& consequences) {
    for (std::size_t i = 0; i < consequences.size(); ++i)
        follow(*programs_.programs()[i], consequences[i]);
    languageRead_(remembered_.preferences().language);
}

void VolumeMemory::follow(Program& program, const RememberedVolumes::Consequence& consequence) {
    if (consequence.ignored) {
        if (consequence.reset || !program.isIgnored())
            ignore(program, consequence.reset);
        return;
    }
    program.unignore();
    program.recall(consequence.forNext);
    if (!consequence.wanted.isEmpty())
        want(program, consequence.wanted,
             consequence.restored ? WantReason::restored : WantReason::command);
}

void VolumeMemory::want(Program& program, const WantedVolume& change, WantReason reason) {
    program.want(change, reason);
    if (&program == effects_.program())
        effects_.asked(program.wanted());
}

void VolumeMemory::ignore(Program& program, bool reset) {
    program.ignore(reset);
    if (reset && &program == effects_.program())
        effects_.asked(kFullVolume);
}
