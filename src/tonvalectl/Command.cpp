#include "tonvalectl/Command.h"

#include "tonvalectl/Failure.h"
#include "tonvalectl/Messages.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace {

using Verb = Command::Verb;

struct Form {
    std::string_view word;
    Verb verb;
    std::size_t least; // of what follows
    std::size_t most;
    std::string_view options; // that go with it
};

constexpr std::array forms{
    Form{"list", Verb::list, 0, 0, "--json --all --names --ignored"},
    Form{"get", Verb::get, 1, 1, "--json"},
    Form{"set", Verb::set, 2, 2, ""},
    Form{"mute", Verb::mute, 1, 1, ""},
    Form{"unmute", Verb::unmute, 1, 1, ""},
    Form{"toggle", Verb::toggle, 1, 1, ""},
    Form{"ignore", Verb::ignore, 1, 1, ""},
    Form{"unignore", Verb::unignore, 1, 1, ""},
    Form{"forget", Verb::forget, 1, 1, ""},
    Form{"default", Verb::defaultVolume, 0, 1, ""},
    Form{"show", Verb::show, 0, 0, ""},
    Form{"monitor", Verb::monitor, 0, 0, "--json"},
};

Failure wrong(const char* english, const std::string& what = {}) {
    return {ExitCode::usage, Messages::text(english, {what})};
}

/// A step such as -5% is none.
bool isOption(std::string_view argument) {
    return argument.size() > 1 && argument[0] == '-' && (argument[1] < '0' || argument[1] > '9');
}

struct Words {
    std::vector<std::string> plain;
    std::vector<std::string> options;
};

Words sorted(const std::vector<std::string>& arguments) {
    Words words;
    const auto end = std::ranges::find(arguments, "--");
    for (auto argument = arguments.begin(); argument != end; ++argument)
        (isOption(*argument) ? words.options : words.plain).push_back(*argument);
    if (end != arguments.end())
        words.plain.insert(words.plain.end(), end + 1, arguments.end());
    return words;
}

bool goesWith(std::string_view option, std::string_view options) {
    const std::string all = " " + std::string(options) + " ";
    return all.find(" " + std::string(option) + " ") != std::string::npos;
}

void apply(const std::string& option, const Form& form, Command& command) {
    if (!goesWith(option, form.options))
        throw wrong("There is no option %1 here; see --help.", option);
    (option == "--json"    ? command.json
     : option == "--all"   ? command.all
     : option == "--names" ? command.names
                           : command.ignored) = true;
}

} // namespace

Command Command::parse(const std::vector<std::string>& arguments) {
    const Words words = sorted(arguments);
    const auto asksFor = [&words](const char* option) {
        return std::ranges::find(words.options, option) != words.options.end();
    };
    if (asksFor("--help") || asksFor("-h"))
        return {.verb = Verb::help, .name = {}, .value = {}};
    if (asksFor("--version"))
        return {.verb = Verb::version, .name = {}, .value = {}};
    if (words.plain.empty())
        throw wrong("There is no command; see --help.");
    const auto form = std::ranges::find(forms, words.plain.front(), &Form::word);
    if (form == forms.end())
        throw wrong("There is no command “%1”; see --help.", words.plain.front());
    const std::size_t count = words.plain.size() - 1;
    if (count < form->least || count > form->most)
        throw wrong("“%1” takes other arguments; see --help.", words.plain.front());
    Command command{.verb = form->verb, .name = {}, .value = {}};
    if (form->verb == Verb::defaultVolume && count > 0)
        command.value = words.plain[1];
    else if (count > 0)
        command.name = words.plain[1];
    if (count > 1)
        command.value = words.plain[2];
    for (const std::string& option : words.options)
        apply(option, *form, command);
    return command;
}
