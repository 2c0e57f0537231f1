#include "tonvalectl/Run.h"

#include "tonvalectl/Failure.h"
#include "tonvalectl/Messages.h"
#include "tonvalectl/Mixer.h"
#include "tonvalectl/Monitor.h"
#include "tonvalectl/Report.h"
#include "tonvalectl/TextWidth.h"
#include "tonvalectl/VolumeChange.h"

#include <cstdio>

namespace {

using Verb = Command::Verb;

constexpr int noDefault = -1;

void print(const std::string& text) {
    std::fputs(text.c_str(), stdout);
}

void printNames(const std::vector<std::string>& names, bool json) {
    print(json ? Report::json(names) : Report::names(names));
}

void list(Mixer& mixer, const Command& command) {
    if (command.ignored) {
        printNames(mixer.ignored(), command.json);
        return;
    }
    auto programs = mixer.programs();
    if (command.all) {
        const auto others = mixer.remembered(programs);
        programs.insert(programs.end(), others.begin(), others.end());
    }
    if (command.names) {
        std::vector<std::string> names;
        names.reserve(programs.size());
        for (const CtlProgram& program : programs)
            names.push_back(program.name);
        printNames(names, command.json);
    } else {
        print(command.json ? Report::json(programs)
                           : Report::table(programs, TextWidth::ofTerminal()));
    }
}

void get(Mixer& mixer, const Command& command) {
    const CtlProgram program = mixer.find(command.name);
    print(command.json ? Report::json(program) : Report::line(program));
}

/// The application refuses too; this tells of which program.
void expectControllable(const CtlProgram& program) {
    if (!program.controllable)
        throw Failure(
            ExitCode::notControllable,
            Messages::text("The volume of “%1” can't be set: %2", {program.name, program.reason}));
}

void set(Mixer& mixer, const Command& command) {
    const VolumeChange change = VolumeChange::parse(command.value.value_or(""));
    const CtlProgram program = mixer.find(command.name);
    expectControllable(program);
    mixer.setVolume(program, change.appliedTo(program.setting.percent));
}

void mute(Mixer& mixer, const Command& command) {
    const CtlProgram program = mixer.find(command.name);
    const bool muted =
        command.verb == Verb::toggle ? !program.setting.muted : command.verb == Verb::mute;
    if (muted) // else it is possible in memory
        expectControllable(program);
    mixer.setMuted(program, muted);
}

void defaultVolume(Mixer& mixer, const Command& command) {
    const std::string off = "off";
    if (!command.value) {
        const int percent = mixer.defaultVolume();
        print((percent == noDefault ? off : std::to_string(percent) + "%") + "\n");
    } else if (*command.value == off) {
        mixer.setDefaultVolume(noDefault);
    } else {
        const VolumeChange change = VolumeChange::parse(*command.value);
        if (change.isStep)
            throw Failure(ExitCode::invalidVolume,
                          Messages::text("“%1” is no volume: it is 0 to 100.", {*command.value}));
        mixer.setDefaultVolume(change.percent);
    }
}

} // namespace

void run(const Command& command) {
    if (command.verb == Verb::set)
        VolumeChange::parse(command.value.value_or("")); // which needs no application
    BusClient bus;
    Mixer mixer(bus);
    switch (command.verb) {
    case Verb::list:
        return list(mixer, command);
    case Verb::get:
        return get(mixer, command);
    case Verb::set:
        return set(mixer, command);
    case Verb::mute:
    case Verb::unmute:
    case Verb::toggle:
        return mute(mixer, command);
    case Verb::ignore:
        return mixer.ignore(command.name);
    case Verb::unignore:
        return mixer.unignore(command.name);
    case Verb::forget:
        return mixer.forget(mixer.find(command.name));
    case Verb::defaultVolume:
        return defaultVolume(mixer, command);
    case Verb::show:
        return mixer.showWindow();
    case Verb::monitor:
        return Monitor(bus, command.json).run();
    case Verb::help:
    case Verb::version:
        break;
    }
}
