#include "plugin/host/PluginStatus.h"

#include "platform/base/HarmlessText.h"

#include <algorithm>
#include <cmath>

using Proof = StreamProcess::Proof;

namespace {

std::string percentText(long percent) {
    return std::to_string(percent) + " %";
}

/// What other mixers show for the stream, times the scalar that they do not show.
long shownPercent(StreamProps props) {
    props.mute = false;
    return std::lround(100.0 * std::cbrt(static_cast<double>(loudestGain(props))));
}

/// Empty for nothing.
std::string textOf(const WantedVolume& volume) {
    std::string text;
    if (const auto percent = volume.percent())
        text = percentText(*percent);
    if (volume.muted)
        text.append(text.empty() ? "" : " ").append(*volume.muted ? "muted" : "not muted");
    return text;
}

std::string wantedText(const WantedVolume& wanted) {
    return wanted.isEmpty() ? "nothing wanted" : "wanted " + textOf(wanted);
}

/// Empty for a program that does not set its own volume.
std::string ownText(const OwnVolume& own) {
    return own == OwnVolume{} ? "" : "own volume " + textOf({own.gain, own.muted}) + ", ";
}

std::string actualText(const std::optional<StreamProps>& actual) {
    if (!actual)
        return "volume not known yet";
    return "has " + percentText(shownPercent(*actual)) + (actual->mute ? " muted" : " not muted");
}

const char* proofText(Proof proof) {
    switch (proof) {
    case Proof::peer:
        return "confirmed by the kernel";
    case Proof::claim:
        return "claimed and verified";
    case Proof::sandbox:
        return "confirmed by its sandbox";
    case Proof::none:
        break;
    }
    return "claimed only, pseudo pid";
}

/// Empty for a program that has its name from us.
std::string evidenceText(const ProgramProcess& process) {
    if (!process.evidence)
        return {};
    const std::string entry =
        process.entryPath.empty() ? "" : " (" + platform::printableText(process.entryPath) + ")";
    return std::string("    ") + describe(*process.evidence) + entry + "\n";
}

std::string programText(const ProgramStatus& program) {
    const ProgramProcess& process = program.process;
    return platform::printableText(process.name) + " (pid " + std::to_string(process.pid) + ", " +
           (process.path.empty() ? "path unknown" : platform::printableText(process.path)) + ", " +
           proofText(process.proof) + "): " + wantedText(program.wanted) +
           (program.remembered.isEmpty() ? "" : ", remembered " + textOf(program.remembered)) +
           (program.ignored ? ", ignored" : "") +
           (program.connected ? "" : ", the application does not know of it") +
           (program.obstacle.empty() ? "" : "; can't be set: " + program.obstacle) + "\n" +
           evidenceText(process);
}

std::string streamText(const StreamStatus& stream) {
    return "    stream " + std::to_string(stream.id) + (stream.running ? " plays" : " pauses") +
           ": " + wantedText(stream.wanted) + ", " + ownText(stream.own) +
           actualText(stream.actual) + "\n";
}

const char* applicationText(const std::vector<ProgramStatus>& programs) {
    if (programs.empty())
        return "no program to tell it of\n";
    const bool connected = std::any_of(programs.begin(), programs.end(),
                                       [](const auto& program) { return program.connected; });
    return connected ? "connected\n" : "not connected\n";
}

std::string preferencesText(const PluginStatus& status) {
    const std::string own = platform::printableText(status.ownPreferences);
    if (status.preferences.empty())
        return "none yet in " + own + "\n";
    const std::string file = platform::printableText(status.preferences);
    return file + (file == own ? "" : ", not " + own) + "\n";
}

} // namespace

std::string describe(const PluginStatus& status) {
    std::string text =
        status.serverConnected ? "sound server: connected\n" : "sound server: not connected\n";
    text.append("application: ").append(applicationText(status.programs));
    text.append("preferences: ").append(preferencesText(status));
    if (!status.crashFolder.empty())
        text.append("crash reports: ")
            .append(platform::printableText(status.crashFolder))
            .append("\n");
    for (const ProgramStatus& program : status.programs) {
        text += programText(program);
        for (const StreamStatus& stream : program.streams)
            text += streamText(stream);
    }
    return text;
}
