#include "naming/ApplicationName.h"

#include "naming/ProcessView.h"
#include "naming/ProgramCommand.h"
#include "naming/ProgramFiles.h"
#include "naming/ProgramKinds.h"
#include "naming/StableName.h"
#include "platform/base/HarmlessText.h"
#include "platform/base/Utf8.h"

#include <algorithm>
#include <cctype>
#include <iterator>

namespace {

/// Default names of sound libraries and runtimes.
constexpr std::string_view emptyNames[] = {"ALSA plug-in",
                                           "Audio Stream",
                                           "AudioIPC Server",
                                           "AudioStream",
                                           "Chromium",
                                           "Chromium input",
                                           "CubebUtils",
                                           "Electron",
                                           "FMOD Ex App",
                                           "FMOD Studio App",
                                           "GStreamer",
                                           "OpenAL Soft",
                                           "PipeWire ALSA",
                                           "Playback",
                                           "PortAudio",
                                           "SDL Application",
                                           "WEBRTC VoiceEngine",
                                           "aplay",
                                           "audio stream",
                                           "audio-src",
                                           "electron",
                                           "java",
                                           "libcanberra",
                                           "node",
                                           "pacat",
                                           "paplay",
                                           "perl",
                                           "playback",
                                           "portaudio",
                                           "pw-cat",
                                           "pw-play",
                                           "pulsesink",
                                           "python",
                                           "python3",
                                           "ruby",
                                           "unknown",
                                           "wine-preloader",
                                           "wine64-preloader"};

/// The icons that those give to every program.
constexpr std::string_view commonIcons[] = {"applications-games", // SDL
                                            "audio-card",         "audio-x-generic",
                                            "chromium-browser", // Chromium, thus Electron
                                            "electron",           "multimedia-player"};

bool isBlank(char each) noexcept {
    return each == ' ' || each == '\t' || each == '\n' || each == '\r';
}

std::string_view trimmed(std::string_view text) noexcept {
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

/// Drops one of the endings, in any case of letters.
std::string_view without(std::string_view name, std::initializer_list<std::string_view> endings) {
    const auto isSame = [](char a, char b) {
        return std::tolower(static_cast<unsigned char>(a)) == b;
    };
    for (const std::string_view ending : endings) {
        if (name.size() > ending.size() &&
            std::ranges::equal(name.substr(name.size() - ending.size()), ending, isSame))
            return name.substr(0, name.size() - ending.size());
    }
    return name;
}

std::string_view appImageLabel(std::string_view path) {
    return withoutVersion(without(fileName(path), {".appimage"}), "-_ ");
}

std::string_view fileLabel(std::string_view path) {
    return without(fileName(path), {".appimage", ".x86_64", ".x86", ".bin", "-bin", ".real"});
}

/// The part of a Java class's or module's name that means the program.
std::string_view classLabel(std::string_view name) {
    constexpr std::string_view general[] = {"App",  "Application", "Client",    "EntryPoint",
                                            "Main", "Launcher",    "client",    "launcher",
                                            "main", "desktop",     "Bootstrap", "__main__"};
    name = name.substr(0, name.find('/'));
    while (true) {
        const std::size_t dot = name.rfind('.');
        const std::string_view last = dot == std::string_view::npos ? name : name.substr(dot + 1);
        if (dot == std::string_view::npos || std::ranges::find(general, last) == std::end(general))
            return last;
        name = name.substr(0, dot);
    }
}

/// The part of a path that means an Electron program: its folder, above those that all have.
std::string_view electronLabel(std::string_view path) {
    constexpr std::string_view general[] = {"",     ".",       "app",      "app.asar",
                                            "dist", "main.js", "resources"};
    const auto isGeneral = [&general](std::string_view name) {
        return std::ranges::find(general, stableFolderName(name)) != std::end(general);
    };
    std::string_view name = fileName(path);
    while (!name.empty() && isGeneral(name)) {
        path = folderName(path);
        name = fileName(path);
    }
    return without(stableFolderName(name), {".asar", ".js"});
}

std::string_view scriptLabel(const ProgramCommand& command) {
    const std::string_view script = command.script;
    switch (programRuntime(command.program)) {
    case ProgramRuntime::electron:
        return electronLabel(script);
    case ProgramRuntime::java:
        return script.ends_with(".jar") ? without(fileName(script), {".jar"}) : classLabel(script);
    case ProgramRuntime::wine:
        return without(fileName(script), {".exe", ".lnk", ".bat", ".msi"});
    case ProgramRuntime::module:
        if (script.find('/') == std::string_view::npos && !script.ends_with(".py"))
            return classLabel(script);
        break;
    case ProgramRuntime::none:
    case ProgramRuntime::script:
    case ProgramRuntime::shell:
        break;
    }
    const std::string_view name =
        without(fileName(script), {".py", ".pyw", ".sh", ".bash", ".js", ".mjs", ".pl", ".rb",
                                   ".lua", ".exe", ".dll", ".jar", ".php", ".qml"});
    return name == "__main__" || name == "main" ? stableFolderAbove(script) : name;
}

} // namespace

std::string sanitizedName(std::string_view text) {
    std::string clean;
    for (text = trimmed(text.substr(0, text.find('\0'))); !text.empty();) {
        const auto [bytes, character] = platform::takeUtf8(text);
        if (!character || character == U'\n' || !platform::disturbsLine(*character))
            clean += bytes;
    }
    clean = trimmed(platform::truncatedUtf8(clean, longestApplicationName));
    platform::makeHarmless(clean, platform::ControlsKept::none);
    return clean;
}

std::string meaningfulName(std::string_view claimed) {
    claimed = trimmed(claimed);
    for (const std::string_view library : {"ALSA plug-in [", "PipeWire ALSA ["}) {
        if (claimed.starts_with(library) && claimed.ends_with(']')) {
            claimed.remove_prefix(library.size());
            claimed.remove_suffix(1);
        }
    }
    const bool isEmpty = std::ranges::find(emptyNames, claimed) != std::end(emptyNames) ||
                         programRuntime(claimed) != ProgramRuntime::none;
    return isEmpty ? std::string() : std::string(claimed);
}

std::string meaningfulIcon(std::string_view claimed) {
    const bool isCommon = std::ranges::find(commonIcons, claimed) != std::end(commonIcons);
    return isCommon ? std::string() : std::string(claimed);
}

std::string gameFolder(std::string_view path) {
    // Windows programs of Steam see the library as a drive.
    for (const std::string_view library :
         {"/steamapps/common/", "\\steamapps\\common\\", "S:\\common\\"}) {
        const std::size_t at = path.find(library);
        if (at == std::string_view::npos)
            continue;
        const std::string_view rest = path.substr(at + library.size());
        const std::size_t end = rest.find_first_of("/\\");
        const std::string_view folder = rest.substr(0, end);
        const bool isRuntime =
            folder.starts_with("Proton") || folder.starts_with("SteamLinuxRuntime");
        if (end != std::string_view::npos && !isRuntime)
            return std::string(folder);
    }
    return {};
}

std::string linkName(const ProgramCommand& command, const ProcessRecord& process,
                     const ProgramFiles& files) {
    if (command.isInterpreted || !process.appImage.empty() || process.arguments.empty())
        return {};
    std::string name(fileName(process.arguments.front()));
    const bool isLink =
        name != fileName(process.executable) && files.isLinkTo(name, process.executable);
    return isLink ? name : std::string();
}

std::string programLabel(const ProgramCommand& command, const ProcessRecord& process) {
    for (const std::string& path : {command.script, command.program}) {
        if (std::string game = gameFolder(path); !game.empty())
            return game;
    }
    if (!process.appImage.empty())
        return std::string(appImageLabel(process.appImage));
    if (command.isInterpreted)
        return std::string(scriptLabel(command));
    return std::string(fileLabel(command.program));
}

std::string formerName(std::string_view path) {
    if (programRuntime(path) != ProgramRuntime::none)
        return {};
    const std::string_view file = fileName(path);
    const bool isImage = without(file, {".appimage"}) != file;
    return sanitizedName(isImage ? appImageLabel(path) : fileLabel(path));
}
