#include "plugin/identity/StreamProcess.h"

#include "platform/processes/ProcessInfo.h"
#include "platform/processes/ProcessSandbox.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <climits>
#include <fstream>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace {

constexpr std::string_view pulseApi = "pipewire-pulse";
constexpr std::string_view portal = "xdg-desktop-portal";
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

/// The file name of the executable, or what the kernel calls the process.
std::string programName(pid_t process, const StreamProcessFacts& facts) {
    const auto path = facts.executablePath(process);
    return path ? fileNameOf(*path) : facts.commandName(process).value_or("");
}

bool isSoundServer(std::string_view name) {
    constexpr std::array<std::string_view, 3> daemons{"pipewire", "pipewire-pulse", "wireplumber"};
    return std::find(daemons.begin(), daemons.end(), name) != daemons.end();
}

/// Whether the program usually makes connections for other clients, which may be remote.
bool isForwarder(std::string_view name) {
    constexpr std::array<std::string_view, 5> forwarders{"ssh", "sshd", "sshd-session", "socat",
                                                         "ncat"};
    return std::find(forwarders.begin(), forwarders.end(), name) != forwarders.end();
}

bool hasBinary(pid_t process, const std::string& binary, const StreamProcessFacts& facts) {
    if (binary.empty())
        return false;
    const auto path = facts.executablePath(process);
    return (path && fileNameOf(*path) == binary) ||
           facts.commandName(process) == binary.substr(0, longestCommand);
}

bool isOlderThanClient(pid_t process, const StreamEvidence& evidence,
                       const StreamProcessFacts& facts) {
    const auto start = facts.startTime(process);
    return start && (!evidence.appeared || *start <= *evidence.appeared);
}

StreamProcess certainProcess(pid_t process, StreamProcess::Proof proof,
                             const StreamProcessFacts& facts) {
    std::string sandbox = facts.application(process);
    if (!sandbox.empty())
        proof = StreamProcess::Proof::sandbox;
    return {static_cast<std::uint32_t>(process), facts.startTime(process), std::move(sandbox),
            proof};
}

/// The processes that a claim may mean.
class Candidates {
  public:
    Candidates(const StreamEvidence& evidence, const StreamClaims& claims,
               const StreamProcessFacts& facts)
        : evidence_(evidence), claims_(claims), facts_(facts) {
        const auto number = processIn(claims.process);
        if (!number)
            return;
        for (const pid_t process : facts.processesNumbered(*number))
            consider(process);
    }

    /// Whether a process of the application that the client is said to be has the claimed number.
    bool isApplicationConfirmed() const noexcept { return applicationConfirmed_; }

    /// The process, if it is unambiguous.
    std::optional<pid_t> only() const {
        std::optional<pid_t> found;
        for (const pid_t process : matches_) {
            if (applicationConfirmed_ && facts_.application(process) != claims_.application)
                continue;
            if (found)
                return std::nullopt;
            found = process;
        }
        return found;
    }

  private:
    void consider(pid_t process) {
        if (!belongs(process))
            return;
        const bool countsAsWeDo = facts_.numbers(process).size() == 1;
        if (countsAsWeDo && !isSameMachine())
            return;
        if (!countsAsWeDo && !claims_.application.empty() &&
            facts_.application(process) == claims_.application)
            applicationConfirmed_ = true;
        if (hasBinary(process, claims_.binary, facts_) &&
            !isSoundServer(programName(process, facts_)))
            matches_.push_back(process);
    }

    bool belongs(pid_t process) const {
        const auto user = facts_.user(process);
        return user && (user == numberIn<uid_t>(evidence_.user) || user == ::geteuid()) &&
               isOlderThanClient(process, evidence_, facts_);
    }

    bool isSameMachine() const {
        const std::string machine = facts_.machine();
        if (!machine.empty() && !claims_.machine.empty())
            return machine == claims_.machine;
        return claims_.host.empty() || claims_.host == facts_.host();
    }

    const StreamEvidence& evidence_;
    const StreamClaims& claims_;
    const StreamProcessFacts& facts_;
    std::vector<pid_t> matches_;
    bool applicationConfirmed_ = false;
};

/// For a client whose connection was made by another process.
StreamProcess claimedProcess(const StreamEvidence& evidence, const StreamClaims& claims,
                             const StreamProcessFacts& facts) {
    if (claims.serverType == "tcp")
        return {};
    const Candidates candidates(evidence, claims, facts);
    if (const auto process = candidates.only())
        return certainProcess(*process, StreamProcess::Proof::claim, facts);
    StreamProcess unknown;
    if (candidates.isApplicationConfirmed())
        unknown.sandbox = claims.application;
    return unknown;
}

/// Whether the client that the peer connected for is another process, as far as can be told.
bool isForwarded(pid_t peer, const std::string& name, const StreamClaims& claims,
                 const StreamProcessFacts& facts) {
    const auto claim = processIn(claims.process);
    const std::vector<pid_t> numbers = facts.numbers(peer);
    return isForwarder(name) && claim && !numbers.empty() && numbers.back() != *claim;
}

/// The first line of a file.
std::string lineIn(const char* path) {
    std::string line;
    std::ifstream file(path);
    std::getline(file, line);
    return line;
}

} // namespace

StreamClaims mergedClaims(const StreamEvidence& evidence) {
    StreamClaims claims = evidence.node;
    for (const auto field :
         {&StreamClaims::process, &StreamClaims::binary, &StreamClaims::name, &StreamClaims::id,
          &StreamClaims::icon, &StreamClaims::host, &StreamClaims::machine, &StreamClaims::api,
          &StreamClaims::serverType}) {
        if ((claims.*field).empty())
            claims.*field = evidence.client.*field;
    }
    claims.application = evidence.client.application;
    return claims;
}

std::vector<pid_t> StreamProcessFacts::processesNumbered(pid_t own) const {
    return numbers_.find(own);
}

std::vector<pid_t> StreamProcessFacts::numbers(pid_t process) const {
    return platform::processNumbers(process);
}

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

std::string StreamProcessFacts::application(pid_t process) const {
    return platform::sandboxApplication(platform::fileSeenBy(process, "/.flatpak-info"),
                                        platform::controlGroups(process));
}

std::string StreamProcessFacts::machine() const {
    const std::string id = lineIn("/etc/machine-id");
    return id.empty() ? lineIn("/var/lib/dbus/machine-id") : id;
}

std::string StreamProcessFacts::host() const {
    std::array<char, HOST_NAME_MAX + 1> name{};
    return ::gethostname(name.data(), name.size()) == 0 ? name.data() : "";
}

std::optional<StreamProcess> identifyStream(const StreamEvidence& evidence,
                                            const StreamProcessFacts& facts) {
    if (evidence.peer.empty())
        return std::nullopt;
    const StreamClaims claims = mergedClaims(evidence);
    const auto peer = processIn(evidence.peer);
    if (!peer) // of a pid namespace that the server does not see into
        return StreamProcess{};
    const std::string name = programName(*peer, facts);
    if (isSoundServer(name)) {
        if (claims.api != pulseApi)
            return std::nullopt;
        return claimedProcess(evidence, claims, facts);
    }
    if (name == portal)
        return claimedProcess(evidence, claims, facts);
    const bool isReused = facts.startTime(*peer) && !isOlderThanClient(*peer, evidence, facts);
    if (isReused || isForwarded(*peer, name, claims, facts))
        return StreamProcess{};
    return certainProcess(*peer, StreamProcess::Proof::peer, facts);
}
