#include "naming/ProgramCommand.h"

#include "naming/ProcessView.h"
#include "naming/ProgramKinds.h"

#include <algorithm>
#include <array>
#include <glib.h>
#include <initializer_list>

namespace {

using Words = std::span<const std::string>;

bool isOneOf(std::string_view text, std::initializer_list<std::string_view> texts) {
    return std::ranges::find(texts, text) != texts.end();
}

bool isOption(std::string_view word) noexcept {
    return word.size() > 1 && word.starts_with('-');
}

bool isAssignment(std::string_view word) noexcept {
    const std::size_t equals = word.find('=');
    return equals != std::string_view::npos && equals > 0 && word.find('/') > equals &&
           word[0] != '-';
}

/// Drops options, those in `valued` with the word behind them, up to the first word that is none.
Words withoutOptions(Words words, std::initializer_list<std::string_view> valued = {}) {
    while (!words.empty() && isOption(words.front())) {
        const bool isEnd = words.front() == "--";
        const std::size_t taken = isOneOf(words.front(), valued) && words.size() > 1 ? 2 : 1;
        words = words.subspan(taken);
        if (isEnd)
            break;
    }
    return words;
}

/// The command without a leading wrapper, if there is one.
Words withoutWrapper(Words words) {
    const std::string_view name = fileName(words.front());
    const Words rest = words.subspan(1);
    if (name == "env") {
        Words command = withoutOptions(rest, {"-u", "-C", "--unset", "--chdir"});
        while (!command.empty() && isAssignment(command.front()))
            command = command.subspan(1);
        return command;
    }
    if (isOneOf(name, {"exec", "nohup", "setsid", "gamemoderun", "mangohud", "prime-run",
                       "primusrun", "optirun", "dbus-run-session", "dbus-launch", "firejail",
                       "pkexec", "sudo", "gksu", "kdesu", "xvfb-run", "systemd-cat"}))
        return withoutOptions(rest, {"-u", "--user"});
    if (isOneOf(name, {"nice", "ionice", "chrt", "systemd-run"}))
        return withoutOptions(rest, {"-n", "-c", "-p", "-u", "--unit"});
    if (name == "taskset") {
        const Words command = withoutOptions(rest, {"-c"});
        return command.empty() ? command : command.subspan(rest[0] == "-c" ? 0 : 1);
    }
    if (isOneOf(name, {"distrobox-enter", "toolbox"})) {
        const auto end = std::ranges::find(rest, "--");
        return end != rest.end() ? Words(end + 1, rest.end()) : words;
    }
    if (programKind(name) == ProgramKind::terminal) {
        const auto end = std::ranges::find_if(rest, [](const auto& word) {
            return isOneOf(word, {"-e", "-x", "--"});
        });
        return end != rest.end() && end + 1 != rest.end() ? Words(end + 1, rest.end()) : words;
    }
    return words;
}

/// The first command of a shell's text that does something, with a path for one in its folder.
std::vector<std::string> firstCommand(const std::string& text) {
    std::vector<std::string> command;
    std::string folder;
    std::vector<std::string> words = commandWords(text);
    words.emplace_back(";");
    for (std::string& word : words) {
        const bool isEnd = isOneOf(word, {";", "&&", "||", "|", "&"}) || word.ends_with(';');
        if (word.size() > 1 && word.ends_with(';'))
            command.push_back(word.substr(0, word.size() - 1));
        else if (!isEnd && !(command.empty() && (isAssignment(word) || word == "exec")))
            command.push_back(word);
        if (!isEnd || command.empty())
            continue;
        if (command.front() != "cd")
            break;
        folder = command.back();
        command.clear();
    }
    if (!command.empty() && command.front().starts_with("./") && !folder.empty())
        command.front() = folder + command.front().substr(1);
    return command;
}

/// What an interpreter's arguments make it run: `used` counts those up to it.
struct Script {
    std::string name;
    std::size_t used = 0;
};

Script scriptIn(Words arguments, std::initializer_list<std::string_view> valued = {}) {
    const Words rest = withoutOptions(arguments, valued);
    if (rest.empty())
        return {{}, arguments.size()};
    return {rest.front(), arguments.size() - rest.size() + 1};
}

/// Python and its like: a file, or a module by name.
Script moduleIn(Words arguments) {
    for (std::size_t i = 0; i < arguments.size() && isOption(arguments[i]); ++i) {
        if (arguments[i] == "-c")
            return {{}, arguments.size()};
        if (arguments[i] == "-m" && i + 1 < arguments.size())
            return {arguments[i + 1], i + 2};
    }
    return scriptIn(arguments, {"-W", "-X"});
}

Script javaProgramIn(Words arguments) {
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view word = arguments[i];
        if (isOneOf(word, {"-jar", "-m", "--module"}) && i + 1 < arguments.size())
            return {arguments[i + 1], i + 2};
        if (isOneOf(word, {"-cp", "-classpath", "--class-path", "-p", "--module-path",
                           "--add-modules", "--add-opens", "--add-exports", "--add-reads"}))
            ++i;
        else if (!isOption(word) && !word.starts_with('@'))
            return {arguments[i], i + 1};
    }
    return {{}, arguments.size()};
}

bool isWindowsProgram(const std::string& word) {
    std::string ending = word.substr(word.size() - std::min<std::size_t>(word.size(), 4));
    std::ranges::transform(ending, ending.begin(), g_ascii_tolower);
    return isOneOf(ending, {".exe", ".lnk", ".bat", ".msi"});
}

Script windowsProgramIn(Words arguments) {
    const auto found = std::ranges::find_if(arguments, isWindowsProgram);
    if (found == arguments.end())
        return {{}, arguments.size()};
    return {*found, static_cast<std::size_t>(found - arguments.begin()) + 1};
}

Script interpretedBy(ProgramRuntime runtime, Words arguments) {
    switch (runtime) {
    case ProgramRuntime::none:
        return {};
    case ProgramRuntime::module:
        return moduleIn(arguments);
    case ProgramRuntime::shell:
        return std::ranges::find(arguments, "-c") != arguments.end() ? Script{{}, arguments.size()}
                                                                     : scriptIn(arguments);
    case ProgramRuntime::java:
        return javaProgramIn(arguments);
    case ProgramRuntime::wine:
        return windowsProgramIn(arguments);
    case ProgramRuntime::script:
    case ProgramRuntime::electron:
        return scriptIn(arguments, {"-r", "--require", "-e", "-I"});
    }
    return {};
}

/// Flatpak's and snapd's own ways of starting an application.
bool readSandbox(Words words, ProgramCommand& command) {
    const std::string_view name = fileName(words.front());
    Words rest = words.subspan(1);
    if ((name == "flatpak" || name == "snap") && !rest.empty() && rest.front() == "run") {
        rest = withoutOptions(rest.subspan(1));
        if (rest.empty())
            return false;
        command.sandbox = (name == "snap" ? "snap." : "") + rest.front();
        command.arguments.assign(rest.begin() + 1, rest.end());
        return true;
    }
    if (words.front().starts_with("/snap/bin/")) {
        command.sandbox = "snap." + std::string(name);
        command.arguments.assign(rest.begin(), rest.end());
        return true;
    }
    return false;
}

void readRequest(ProgramCommand& command) {
    constexpr std::string_view steam = "steam://rungameid/";
    for (std::size_t i = 0; i < command.arguments.size(); ++i) {
        const std::string& word = command.arguments[i];
        if (word.starts_with(steam))
            command.game = word.substr(steam.size());
        else if (word == "-applaunch" && i + 1 < command.arguments.size())
            command.game = command.arguments[i + 1];
        const bool isAddress = word.find("://") != std::string::npos || word.starts_with("lutris:");
        command.isRequest |= isAddress || !command.game.empty();
    }
    command.isRequest &= programKind(command.program) == ProgramKind::launcher ||
                         isOneOf(fileName(command.program), {"xdg-open", "gio"});
}

/// Without what the desktop fills in when it starts the program.
std::vector<std::string> withoutFieldCodes(Words words) {
    std::vector<std::string> kept;
    for (const std::string& word : words) {
        if (word == "%%")
            kept.emplace_back("%");
        else if (!(word.size() == 2 && word[0] == '%') && word != "@@" && word != "@@u")
            kept.push_back(word);
    }
    return kept;
}

constexpr std::array<std::string_view, 22> sharedFolders{"/",
                                                         "/app",
                                                         "/bin",
                                                         "/home",
                                                         "/lib",
                                                         "/opt",
                                                         "/run",
                                                         "/sbin",
                                                         "/snap",
                                                         "/srv",
                                                         "/tmp",
                                                         "/usr",
                                                         "/usr/games",
                                                         "/usr/lib",
                                                         "/usr/lib64",
                                                         "/usr/libexec",
                                                         "/usr/local",
                                                         "/usr/local/lib",
                                                         "/usr/share",
                                                         "/usr/share/games",
                                                         "/usr/local/games",
                                                         "/var"};

bool isShared(std::string_view folder) {
    // The architecture's folder in /usr/lib, home folders, and the standard folders of every home.
    if (std::ranges::find(sharedFolders, folder) != sharedFolders.end())
        return true;
    const std::string_view above = folderName(folder);
    if (above == "/home" || folder == "/root" || above == "/snap" || above == "/usr/local")
        return true;
    if (above == "/usr/lib" && fileName(folder).find("-linux-") != std::string_view::npos)
        return true;
    return isOneOf(fileName(folder), {".local", "share", "Downloads", "Desktop", "Applications",
                                      "Games", "bin", "common", "site-packages", "dist-packages"});
}

} // namespace

std::vector<std::string> commandWords(const std::string& line) {
    std::vector<std::string> words;
    gint count = 0;
    gchar** parsed = nullptr;
    if (g_shell_parse_argv(line.c_str(), &count, &parsed, nullptr) != FALSE)
        words.assign(parsed, parsed + count);
    g_strfreev(parsed);
    return words;
}

ProgramCommand startedProgram(std::span<const std::string> words) {
    std::vector<std::string> command = withoutFieldCodes(words);
    ProgramCommand result;
    constexpr int deepest = 8;
    for (int depth = 0; depth < deepest && !command.empty(); ++depth) {
        if (readSandbox(command, result))
            return result;
        const Words inner = withoutWrapper(command);
        const auto text = std::ranges::find(command, "-c");
        if (inner.size() != command.size())
            command = {inner.begin(), inner.end()};
        else if (programKind(command.front()) == ProgramKind::shell && text != command.end() &&
                 text + 1 != command.end())
            command = withoutFieldCodes(firstCommand(std::string(*(text + 1))));
        else
            break;
    }
    if (command.empty())
        return result;
    result.program = command.front();
    const Words arguments = Words(command).subspan(1);
    const ProgramRuntime runtime = programRuntime(result.program);
    Script script = interpretedBy(runtime, arguments);
    result.isInterpreted = runtime != ProgramRuntime::none;
    result.script = std::move(script.name);
    result.arguments.assign(arguments.begin() + static_cast<std::ptrdiff_t>(script.used),
                            arguments.end());
    readRequest(result);
    return result;
}

ProgramCommand runningProgram(const ProcessRecord& process) {
    ProgramCommand result;
    result.program = process.executable;
    const ProgramRuntime runtime = programRuntime(process.executable);
    result.isInterpreted = runtime != ProgramRuntime::none;
    const Words words = process.arguments;
    if (words.empty())
        return result;
    const Words arguments = words.subspan(1);
    // Wine puts the Windows program where the name of the executable would be.
    Script script = runtime == ProgramRuntime::wine && isWindowsProgram(words.front())
                        ? Script{words.front(), 0}
                        : interpretedBy(runtime, arguments);
    result.script = std::move(script.name);
    result.arguments.assign(arguments.begin() + static_cast<std::ptrdiff_t>(script.used),
                            arguments.end());
    return result;
}

std::string packageFolder(std::string_view program) {
    std::string_view folder = folderName(program);
    if (folder.empty() || !folder.starts_with('/'))
        return {};
    const auto isPart = [](std::string_view name) {
        return isOneOf(name, {"bin", "sbin", "lib", "libexec", "program", "resources"});
    };
    while (isPart(fileName(folder)) && !isShared(folderName(folder)))
        folder = folderName(folder);
    return isShared(folder) || isPart(fileName(folder)) ? std::string() : std::string(folder);
}

bool isInFolder(std::string_view path, std::string_view folder) noexcept {
    return !folder.empty() && path.size() > folder.size() && path.starts_with(folder) &&
           path[folder.size()] == '/';
}
