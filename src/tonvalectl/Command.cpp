#include "tonvalectl/Command.h"

#include "platform/language/PlainTexts.h"
#include "tonvalectl/Failure.h"
#include "tonvalectl/Verbs.h"

#include <algorithm>
#include <string_view>

namespace {

Failure wrong(const std::string& text, const std::string& what = {}) {
    return {ExitCode::usage, PlainTexts::filled(text, {what})};
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

std::vector<std::string_view> split(std::string_view words) {
    std::vector<std::string_view> parts;
    while (!words.empty()) {
        const std::string_view part = words.substr(0, words.find(' '));
        if (!part.empty())
            parts.push_back(part);
        words.remove_prefix(std::min(part.size() + 1, words.size()));
    }
    return parts;
}

/// `given` begins with the verb.
void takeArguments(const std::vector<std::string>& given, Command& command) {
    const auto forms = split(command.verb->arguments);
    const auto least =
        std::ranges::count_if(forms, [](std::string_view form) { return form[0] != '['; });
    const std::size_t count = given.size() - 1;
    if (count < static_cast<std::size_t>(least) || count > forms.size())
        throw wrong(PlainTexts::tr("“%1” takes other arguments; see --help."), given.front());
    for (std::size_t i = 0; i < count; ++i) {
        if (forms[i] == "NAME")
            command.name = given[i + 1];
        else
            command.value = given[i + 1];
    }
}

void takeOption(const std::string& word, Command& command) {
    const auto option = std::ranges::find(options(), word, &Option::word);
    if (option == options().end() ||
        std::ranges::count(split(option->verbs), command.verb->word) == 0)
        throw wrong(PlainTexts::tr("The command has no option %1; see --help."), word);
    command.*option->flag = true;
}

} // namespace

Command Command::parse(const std::vector<std::string>& arguments) {
    const Words words = sorted(arguments);
    for (const Verb& verb : verbOptions()) {
        if (std::ranges::count(words.options, verb.word) > 0)
            return {.verb = &verb, .name = {}, .value = {}};
    }
    if (words.plain.empty())
        throw wrong(PlainTexts::tr("There is no command; see --help."));
    const auto verb = std::ranges::find(verbs(), words.plain.front(), &Verb::word);
    if (verb == verbs().end())
        throw wrong(PlainTexts::tr("There is no command “%1”; see --help."), words.plain.front());
    Command command{.verb = &*verb, .name = {}, .value = {}};
    takeArguments(words.plain, command);
    for (const std::string& option : words.options)
        takeOption(option, command);
    return command;
}
