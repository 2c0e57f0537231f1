#include "tonvalectl/Verbs.h"

#include "platform/base/MarkedText.h"
#include "platform/language/PlainTexts.h"
#include "settings/VolumeChange.h"
#include "tonvalectl/Failure.h"
#include "tonvalectl/Mixer.h"
#include "tonvalectl/Monitor.h"
#include "tonvalectl/Report.h"
#include "tonvalectl/TextWidth.h"

#include <array>
#include <cstdio>
#include <string_view>

namespace {

constexpr int noDefault = -1;

void print(const std::string& text) {
    std::fputs(text.c_str(), stdout);
}

void printNames(const std::vector<std::string>& names, bool json) {
    print(json ? Report::json(names) : Report::names(names));
}

void list(const Command& command) {
    Mixer mixer;
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

void get(const Command& command) {
    const CtlProgram program = Mixer().find(command.name);
    print(command.json ? Report::json(program) : Report::line(program));
}

/// The application refuses too, but this message names the program.
void expectControllable(const CtlProgram& program) {
    if (!program.controllable)
        throw Failure(ExitCode::notControllable,
                      PlainTexts::filled(PlainTexts::tr("The volume of “%1” can't be set: %2"),
                                         {program.name, program.reason}));
}

VolumeChange changeIn(const std::string& text) {
    const auto change = VolumeChange::parse(text);
    if (!change)
        throw Failure(
            ExitCode::invalidVolume,
            PlainTexts::filled(
                PlainTexts::tr("“%1” is no volume: it is 0 to 100, or a step such as +5%."),
                {text}));
    return *change;
}

void set(const Command& command) {
    const VolumeChange change = changeIn(command.value.value_or(""));
    Mixer mixer; // which a number that is none does not need
    const CtlProgram program = mixer.find(command.name);
    expectControllable(program);
    mixer.setVolume(program, change.appliedTo(program.setting.percent));
}

void reset(const Command& command) {
    Mixer mixer;
    const CtlProgram program = mixer.find(command.name);
    expectControllable(program);
    mixer.reset(program);
}

/// `muted` is what becomes of what it is.
void setMuted(const Command& command, bool (*muted)(bool before)) {
    Mixer mixer;
    const CtlProgram program = mixer.find(command.name);
    if (muted(program.setting.muted)) // else it is possible in memory
        expectControllable(program);
    mixer.setMuted(program, muted(program.setting.muted));
}

void mute(const Command& command) {
    setMuted(command, [](bool) { return true; });
}

void unmute(const Command& command) {
    setMuted(command, [](bool) { return false; });
}

void toggle(const Command& command) {
    setMuted(command, [](bool before) { return !before; });
}

void ignore(const Command& command) {
    Mixer().ignore(command.name);
}

void unignore(const Command& command) {
    Mixer().unignore(command.name);
}

void forget(const Command& command) {
    Mixer mixer;
    mixer.forget(mixer.find(command.name));
}

void defaultVolume(const Command& command) {
    Mixer mixer;
    const std::string off = "off";
    if (!command.value) {
        const int percent = mixer.defaultVolume();
        print((percent == noDefault ? off : std::to_string(percent) + "%") + "\n");
    } else if (*command.value == off) {
        mixer.setDefaultVolume(noDefault);
    } else {
        const VolumeChange change = changeIn(*command.value);
        if (change.isStep)
            throw Failure(ExitCode::invalidVolume,
                          PlainTexts::filled(PlainTexts::tr("“%1” is no volume: it is 0 to 100."),
                                             {*command.value}));
        mixer.setDefaultVolume(change.percent);
    }
}

void show(const Command& /*command*/) {
    Mixer().showWindow();
}

void monitor(const Command& command) {
    BusClient bus;
    Monitor(bus, command.json).run();
}

constexpr const char* helpHead = MARKED_TEXT("PlainTexts", R"(Usage: tonvalectl COMMAND [OPTIONS]

Sets the volume of each program by way of the running Tonvale.
)");

constexpr const char* helpTail = MARKED_TEXT("PlainTexts", R"(
A NAME may be shortened as long as it fits one program only; upper and lower case are the same.
Exit codes: 0 done, 1 refused, 2 wrong arguments, 3 Tonvale is not running, 4 no such program,
5 doubtful name, 6 bad number, 7 the volume can't be set, 8 no session bus. See tonvalectl(1).
)");

std::string helpRow(std::string form, const char* text) {
    constexpr std::size_t indent = 2;
    constexpr std::size_t column = 25;
    form.insert(0, indent, ' ');
    if (*text != '\0')
        form.resize(column, ' ');
    return form + (*text != '\0' ? PlainTexts::tr(text) : "") + '\n';
}

/// An option of one verb stands below it, one of several at the end.
std::string helpOfOptions(std::string_view verb, const std::string& indent) {
    std::string text;
    for (const Option& option : options()) {
        const bool isShared = std::string_view(option.verbs).find(' ') != std::string_view::npos;
        if (isShared ? verb.empty() : verb == option.verbs)
            text += helpRow(indent + option.word, option.help);
    }
    return text;
}

void help(const Command& /*command*/) {
    std::string text = PlainTexts::tr(helpHead) + '\n';
    for (const Verb& verb : verbs()) {
        const std::string gap = *verb.arguments != '\0' ? " " : "";
        text += helpRow(verb.word + gap + verb.arguments, verb.help);
        text += helpOfOptions(verb.word, "    ");
    }
    print(text + '\n' + helpOfOptions("", "") +
          helpRow("--help, --version", MARKED_TEXT("PlainTexts", "print and exit")) +
          PlainTexts::tr(helpTail));
}

void version(const Command& /*command*/) {
    print("tonvalectl " TONVALE_VERSION "\n");
}

constexpr std::array all{
    Verb{"list", "", MARKED_TEXT("PlainTexts", "programs with volume, mute, level and process"),
         list},
    Verb{"get", "NAME", MARKED_TEXT("PlainTexts", "one program's volume"), get},
    Verb{"set", "NAME PERCENT", MARKED_TEXT("PlainTexts", "set it: 40, 40%, or a step: +5%, -5%"),
         set},
    Verb{"reset", "NAME", MARKED_TEXT("PlainTexts", "set it to 100%"), reset},
    Verb{"mute", "NAME", MARKED_TEXT("PlainTexts", "mute, unmute, or the one that it is not"),
         mute},
    Verb{"unmute", "NAME", "", unmute},
    Verb{"toggle", "NAME", "", toggle},
    Verb{"ignore", "NAME",
         MARKED_TEXT("PlainTexts", "neither show nor touch it from now on; it need not run"),
         ignore},
    Verb{"unignore", "NAME", MARKED_TEXT("PlainTexts", "undo that"), unignore},
    Verb{"forget", "NAME", MARKED_TEXT("PlainTexts", "forget all that is remembered of it"),
         forget},
    Verb{"default", "[PERCENT|off]",
         MARKED_TEXT("PlainTexts", "the volume that programs begin with that were never seen"),
         defaultVolume},
    Verb{"show", "", MARKED_TEXT("PlainTexts", "bring the window to the front"), show},
    Verb{"monitor", "", MARKED_TEXT("PlainTexts", "print what changes, until Tonvale ends"),
         monitor},
};

constexpr std::array allOptions{
    Option{"--all", "list",
           MARKED_TEXT("PlainTexts", "also those that are remembered and not running"),
           &Command::all},
    Option{"--names", "list", MARKED_TEXT("PlainTexts", "nothing but names"), &Command::names},
    Option{"--ignored", "list", MARKED_TEXT("PlainTexts", "the names of programs that are ignored"),
           &Command::ignored},
    Option{"--json", "list get monitor",
           MARKED_TEXT("PlainTexts", "for list, get and monitor: print JSON"), &Command::json},
};

constexpr std::array allVerbOptions{Verb{"--help", "", "", help}, Verb{"-h", "", "", help},
                                    Verb{"--version", "", "", version}};

} // namespace

std::span<const Verb> verbs() {
    return all;
}

std::span<const Option> options() {
    return allOptions;
}

std::span<const Verb> verbOptions() {
    return allVerbOptions;
}
