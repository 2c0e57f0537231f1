#include "platform/StreamProcess.h"

#include "platform/ProcessInfo.h"
#include "platform/Utf8.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>
#include <unistd.h>

namespace platform {

namespace {

constexpr std::string_view pulseApi = "pipewire-pulse";
constexpr std::size_t longestCommand = 15; // the kernel cuts the short name there

template <typename Number>
std::optional<Number> numberIn(std::string_view text) {
    Number number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

std::optional<pid_t> processIn(std::string_view text) {
    const auto process = numberIn<pid_t>(text);
    return process && *process > 0 ? process : std::nullopt;
}

std::string fileNameOf(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

/// The beginning of `text` that fits; bytes that are no UTF-8 become question marks.
std::string fitting(std::string_view text, std::size_t longest) {
    std::string result;
    while (!text.empty() && text.front() != '\0') {
        const std::size_t length = utf8Length(text);
        const std::size_t taken = std::max<std::size_t>(length, 1);
        if (result.size() + taken > longest)
            break;
        if (length == 0)
            result += '?';
        else
            result += text.substr(0, length);
        text.remove_prefix(taken);
    }
    return result;
}

/// A name for a stream whose executable is unknown.
std::string claimedName(const StreamEvidence& evidence) {
    for (const std::string& claim : {evidence.nodeBinary, evidence.applicationName}) {
        if (!claim.empty())
            return claim;
    }
    return "unknown";
}

bool isSoundServer(const std::string& executable) {
    constexpr std::array<std::string_view, 3> daemons{"pipewire", "pipewire-pulse", "wireplumber"};
    return std::find(daemons.begin(), daemons.end(), executable) != daemons.end();
}

StreamProcess pseudoProcess(const StreamEvidence& evidence) {
    const auto offset =
        static_cast<std::uint32_t>(evidence.clientSerial) & (StreamProcess::firstPseudoProcess - 1);
    return {StreamProcess::firstPseudoProcess + offset,
            fitting(claimedName(evidence), StreamProcess::longestName), "", std::nullopt};
}

bool hasBinary(pid_t process, const std::string& binary, const StreamProcessFacts& facts) {
    if (binary.empty())
        return false;
    const auto path = facts.executablePath(process);
    return (path && fileNameOf(*path) == binary) ||
           facts.commandName(process) == binary.substr(0, longestCommand);
}

bool isTrueClaim(pid_t process, const StreamEvidence& evidence, const StreamProcessFacts& facts) {
    const auto user = facts.user(process);
    if (!user || (*user != numberIn<uid_t>(evidence.clientUser) && *user != ::geteuid()))
        return false;
    return hasBinary(process, evidence.nodeBinary, facts);
}

StreamProcess certainProcess(pid_t process, StreamProcess::Proof proof,
                             const StreamEvidence& evidence, const StreamProcessFacts& facts) {
    const std::string path = facts.executablePath(process).value_or("");
    std::string name = fileNameOf(path);
    if (name.empty())
        name = facts.commandName(process).value_or("");
    if (name.empty())
        name = claimedName(evidence);
    return {static_cast<std::uint32_t>(process), fitting(name, StreamProcess::longestName),
            fitting(path, StreamProcess::longestPath), facts.startTime(process), proof};
}

} // namespace

std::optional<std::string> StreamProcessFacts::executablePath(pid_t process) const {
    return platform::executablePath(process);
}

std::optional<std::string> StreamProcessFacts::commandName(pid_t process) const {
    return platform::commandName(process);
}

std::optional<uid_t> StreamProcessFacts::user(pid_t process) const {
    return platform::processUser(process);
}

std::optional<std::uint64_t> StreamProcessFacts::startTime(pid_t process) const {
    return platform::processStartTime(process);
}

std::optional<StreamProcess> identifyStream(const StreamEvidence& evidence,
                                            const StreamProcessFacts& facts) {
    if (evidence.nodeApi == pulseApi) {
        const auto claim = processIn(evidence.nodeProcess);
        if (claim && isTrueClaim(*claim, evidence, facts))
            return certainProcess(*claim, StreamProcess::Proof::claim, evidence, facts);
        return pseudoProcess(evidence);
    }
    const auto peer = processIn(evidence.clientProcess);
    if (!peer)
        return std::nullopt;
    StreamProcess process = certainProcess(*peer, StreamProcess::Proof::peer, evidence, facts);
    if (isSoundServer(process.name))
        return std::nullopt;
    return process;
}

} // namespace platform
