#include "plugin/identity/StreamProcess.h"
#include "platform/processes/ProcessSandbox.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <unistd.h>

namespace {

constexpr uid_t otherUser = 4242;
constexpr std::uint64_t early = 1000;
constexpr std::uint64_t late = 9000;
constexpr std::uint64_t clientAppeared = 5000;

/// A process table of plain data.
class Processes : public StreamProcessFacts {
  public:
    struct Process {
        std::string path;
        std::string command;
        uid_t user = ::geteuid();
        std::uint64_t start = early;
        std::string application = {};
        pid_t inner = 0; // its number in its own pid namespace
    };

    explicit Processes(std::map<pid_t, Process> table) : table_(std::move(table)) {}

    std::vector<pid_t> processesNumbered(pid_t own) const override {
        std::vector<pid_t> found;
        for (const auto& [process, facts] : table_) {
            if ((facts.inner == 0 ? process : facts.inner) == own)
                found.push_back(process);
        }
        return found;
    }
    std::vector<pid_t> numbers(pid_t process) const override {
        const pid_t inner = fact(process, &Process::inner).value_or(-1);
        if (inner < 0)
            return {};
        return inner == 0 ? std::vector{process} : std::vector{process, inner};
    }
    std::optional<std::string> executablePath(pid_t process) const override {
        const std::string path = fact(process, &Process::path).value_or("");
        return path.empty() ? std::nullopt : std::optional(path);
    }
    std::optional<std::string> commandName(pid_t process) const override {
        return fact(process, &Process::command);
    }
    std::optional<uid_t> user(pid_t process) const override {
        return fact(process, &Process::user);
    }
    std::optional<std::uint64_t> startTime(pid_t process) const override {
        return fact(process, &Process::start);
    }
    std::string application(pid_t process) const override {
        return fact(process, &Process::application).value_or("");
    }
    std::string machine() const override { return "here"; }
    std::string host() const override { return "this-host"; }

  private:
    template <typename Fact>
    std::optional<Fact> fact(pid_t process, Fact Process::*of) const {
        const auto found = table_.find(process);
        return found != table_.end() ? std::optional(found->second.*of) : std::nullopt;
    }

    const std::map<pid_t, Process> table_;
};

StreamEvidence throughPulse(const std::string& process, const std::string& binary) {
    StreamEvidence evidence;
    evidence.node.api = "pipewire-pulse";
    evidence.node.process = process;
    evidence.node.binary = binary;
    evidence.node.name = "Some Player";
    evidence.node.machine = "here";
    evidence.peer = "50"; // the daemon
    evidence.user = std::to_string(::geteuid());
    evidence.appeared = clientAppeared;
    return evidence;
}

StreamEvidence throughPulseOf(const std::string& application, const std::string& process,
                              const std::string& binary) {
    StreamEvidence evidence = throughPulse(process, binary);
    evidence.client.application = application;
    return evidence;
}

StreamEvidence native(const std::string& process) {
    StreamEvidence evidence;
    evidence.node.name = "Some Player";
    evidence.peer = process;
    evidence.appeared = clientAppeared;
    return evidence;
}

const Processes
    processes({{2, {"/usr/lib/systemd/systemd", "kthreadd"}},
               {50, {"/usr/bin/pipewire", "pipewire-pulse"}},
               {51, {"/usr/libexec/xdg-desktop-portal", "xdg-desktop-por"}},
               {52, {"/usr/sbin/sshd", "sshd"}},
               {53, {"", "pipewire-pulse"}},
               {100, {"/usr/bin/pacat", "paplay"}},
               {101, {"", "long-named-play"}},
               {102, {"/opt/x/player", "player", otherUser}},
               {104, {"/usr/bin/pacat", "pacat", ::geteuid(), late}},
               // Two containers that count alike, the second of which came after the client.
               {200, {"/usr/bin/mpv", "mpv", ::geteuid(), early, "", 7}},
               {201, {"/usr/bin/mpv", "mpv", ::geteuid(), late, "", 7}},
               {202, {"/usr/bin/vlc", "vlc", ::geteuid(), early, "", 7}},
               {203, {"/usr/bin/twin", "twin", ::geteuid(), early, "", 7}},
               {204, {"/usr/bin/twin", "twin", ::geteuid(), early, "", 7}},
               {205, {"/usr/bin/mpv", "mpv", ::geteuid(), early, "", 100}},
               {206, {"/usr/bin/mpv", "mpv", otherUser, early, "", 8}},
               {300, {"/app/bin/fox", "fox", ::geteuid(), early, "org.example.Fox", 2}},
               {301, {"/app/bin/fox", "fox", ::geteuid(), early, "org.example.Fox", 3}},
               {302, {"/app/bin/fox", "fox", ::geteuid(), early, "org.example.Fox", 3}},
               {303, {"/app/bin/fox", "fox", ::geteuid(), early, "org.example.Owl", 2}},
               {400, {"/snap/player/1/player", "player", ::geteuid(), early, "snap.player"}},
               {401, {"/snap/player/1/helper", "helper", ::geteuid(), early, "snap.player"}}});

} // namespace

TEST(StreamProcess, ANativeClientIsTheProcessThatTheKernelNames) {
    const auto process = identifyStream(native("100"), processes);
    ASSERT_TRUE(process);
    EXPECT_EQ(process->pid, 100U);
    EXPECT_EQ(process->startTime, early);
    EXPECT_EQ(process->sandbox, "");
    EXPECT_EQ(process->proof, StreamProcess::Proof::peer);
    EXPECT_EQ(identifyStream(native("101"), processes)->pid, 101U) << "its executable is hidden";
}

TEST(StreamProcess, NoClientPassesForTheSoundServer) {
    for (const char* const daemon : {"50", "53"}) {
        const auto process = identifyStream(throughPulse(daemon, "pipewire-pulse"), processes);
        ASSERT_TRUE(process);
        EXPECT_FALSE(process->isKnown()) << process->pid;
    }
    const auto process = identifyStream(throughPulse("50", "pipewire"), processes);
    EXPECT_TRUE(process && !process->isKnown());
}

TEST(StreamProcess, ANativeClientCannotPassForAnother) {
    StreamEvidence evidence = native("100");
    evidence.node = throughPulse("400", "player").node;
    evidence.client = evidence.node;
    evidence.client.application = "org.example.Fox";
    evidence.client.host = "elsewhere";
    const auto process = identifyStream(evidence, processes);
    EXPECT_EQ(process->pid, 100U);
    EXPECT_EQ(process->sandbox, "");
}

TEST(StreamProcess, ANativeClientKeepsItsPidAfterItEnds) {
    const auto gone = identifyStream(native("999"), processes);
    EXPECT_EQ(gone->pid, 999U);
    EXPECT_FALSE(gone->startTime);
    EXPECT_FALSE(identifyStream(native("104"), processes)->isKnown())
        << "the number went to a process that came after the client";
}

TEST(StreamProcess, StreamsOfTheSoundServerItselfAreNobodys) {
    EXPECT_FALSE(identifyStream(native("50"), processes));
    EXPECT_FALSE(identifyStream(native("53"), processes));
    EXPECT_FALSE(identifyStream(native(""), processes));
    EXPECT_FALSE(identifyStream({}, processes));
}

TEST(StreamProcess, AClaimIsBelievedIfExactlyOneProcessFits) {
    struct Case {
        const char* what;
        const char* process;
        const char* binary;
        std::uint32_t pid; // 0: none
    };
    for (const Case& each :
         {Case{"by executable", "100", "pacat", 100},
          Case{"by short name", "101", "long-named-player", 101},
          Case{"in a container", "7", "vlc", 202},
          Case{"not in the container that came later", "7", "mpv", 200},
          Case{"in the container, not what has the number here", "100", "mpv", 205},
          Case{"a snap, which counts as we do", "400", "player", 400},
          Case{"number of an unknown namespace", "2", "firefox", 0},
          Case{"process of another user", "102", "player", 0},
          Case{"another user's container", "8", "mpv", 0},
          Case{"younger than the client", "104", "pacat", 0},
          Case{"number outside of the container", "202", "vlc", 0},
          Case{"two containers", "7", "twin", 0}, Case{"no such process", "999", "pacat", 0},
          Case{"no binary", "100", "", 0}, Case{"no number", "", "pacat", 0},
          Case{"rubbish", "100x", "pacat", 0}, Case{"negative", "-100", "pacat", 0},
          Case{"too large", "99999999999999999999", "pacat", 0}}) {
        SCOPED_TRACE(each.what);
        const auto process = identifyStream(throughPulse(each.process, each.binary), processes);
        ASSERT_TRUE(process);
        EXPECT_EQ(process->isKnown() ? process->pid : 0, each.pid);
        EXPECT_EQ(process->startTime.value_or(0), each.pid != 0 ? early : 0);
        EXPECT_EQ(process->proof != StreamProcess::Proof::none, each.pid != 0);
    }
    StreamEvidence evidence = throughPulse("102", "player");
    evidence.user = std::to_string(otherUser);
    EXPECT_EQ(identifyStream(evidence, processes)->pid, 102U) << "of the client's user";
    evidence = throughPulse("", "");
    evidence.client = throughPulse("100", "pacat").node;
    EXPECT_EQ(identifyStream(evidence, processes)->pid, 100U) << "only the client claims";
    EXPECT_EQ(identifyStream(evidence, processes)->proof, StreamProcess::Proof::claim);
}

TEST(StreamProcess, AClientFromElsewhereIsNoProcessHere) {
    const struct {
        const char* what;
        StreamEvidence evidence;
        std::function<void(StreamEvidence&)> change;
        std::uint32_t pid; // 0: not known
    } cases[] = {
        {"over TCP", throughPulse("100", "pacat"), [](auto& of) { of.node.serverType = "tcp"; }, 0},
        {"another machine", throughPulse("100", "pacat"), [](auto& of) { of.node.machine = "it"; },
         0},
        {"another host", throughPulse("100", "pacat"),
         [](auto& of) {
             of.node.machine = "";
             of.node.host = "elsewhere";
         },
         0},
        {"a host renamed", throughPulse("100", "pacat"), [](auto& of) { of.node.host = "it"; },
         100},
        {"a container's own id", throughPulse("7", "vlc"), [](auto& of) { of.node.machine = "it"; },
         202},
        {"through ssh", native("52"), [](auto& of) { of.client.process = "100"; }, 0},
        {"ssh itself", native("52"), [](auto& of) { of.client.process = "52"; }, 52},
        {"unseen", native("0"), [](auto&) {}, 0},
    };
    for (const auto& each : cases) {
        StreamEvidence evidence = each.evidence;
        each.change(evidence);
        const auto process = identifyStream(evidence, processes);
        EXPECT_EQ(process->isKnown() ? process->pid : 0, each.pid) << each.what;
    }
}

TEST(StreamProcess, ASandboxedApplicationIsKnownByWhatTheKernelShows) {
    const auto fox = identifyStream(native("300"), processes);
    EXPECT_EQ(fox->sandbox, "org.example.Fox");
    EXPECT_EQ(fox->proof, StreamProcess::Proof::sandbox);
    EXPECT_EQ(identifyStream(throughPulse("401", "helper"), processes)->sandbox, "snap.player");

    // Two flatpaks say 2.
    EXPECT_EQ(identifyStream(throughPulseOf("org.example.Fox", "2", "fox"), processes)->pid, 300U);
    EXPECT_EQ(identifyStream(throughPulseOf("org.example.Owl", "2", "fox"), processes)->pid, 303U);
    // Which process it is stays open, but not of what.
    const auto either = identifyStream(throughPulseOf("org.example.Fox", "3", "fox"), processes);
    EXPECT_FALSE(either->isKnown());
    EXPECT_EQ(either->sandbox, "org.example.Fox");
    StreamEvidence throughPortal = throughPulseOf("org.example.Fox", "2", "fox");
    throughPortal.peer = "51";
    throughPortal.node.api = "";
    EXPECT_EQ(identifyStream(throughPortal, processes)->pid, 300U);
}

TEST(StreamProcess, AnApplicationIdThatTheKernelDoesNotConfirmIsNotBelieved) {
    for (const char* const peer : {"50", "51"}) {
        StreamEvidence evidence = throughPulseOf("org.example.Fox", "100", "pacat");
        evidence.peer = peer;
        EXPECT_EQ(identifyStream(evidence, processes)->pid, 100U);
        EXPECT_EQ(identifyStream(evidence, processes)->sandbox, "");
        evidence.node.process = "999";
        EXPECT_EQ(identifyStream(evidence, processes)->sandbox, "");
    }
}

TEST(StreamProcess, TheClientsClaimsCountWhereTheNodeMakesNone) {
    StreamEvidence evidence;
    evidence.node.name = "of the node";
    evidence.client.name = "of the client";
    evidence.client.id = "id";
    evidence.client.icon = "icon";
    evidence.node.application = "may be said by anybody";
    const auto claims = mergedClaims(evidence);
    EXPECT_EQ(claims.name, "of the node");
    EXPECT_EQ(claims.id, "id");
    EXPECT_EQ(claims.icon, "icon");
    EXPECT_EQ(claims.application, "");
}

TEST(ProcessSandbox, IsReadFromItsDescriptionElseFromTheControlGroup) {
    struct Case {
        const char* what;
        const char* description;
        const char* controlGroups;
        const char* application;
    };
    constexpr const char* user = "0::/user.slice/user-1000.slice/user@1000.service/app.slice/";
    for (const Case& each :
         {Case{"flatpak", "[Application]\nname=org.example.Fox\nruntime=x\n", "",
               "org.example.Fox"},
          Case{"no name of the application", "[Instance]\nname=x\n[Application]\nruntime=y\n", "",
               ""},
          Case{"flatpak that hides its files", "", "app-flatpak-org.example.Big\\x2dFox-2471.scope",
               "org.example.Big-Fox"},
          Case{"snap", "", "snap.player.player-8a1c2f6e.scope", "snap.player"},
          Case{"a snap's service", "", "snap.media-server.daemon.service/inner",
               "snap.media-server"},
          Case{"desktop application", "", "app-gnome-firefox-1234.scope", ""},
          Case{"the snap daemon", "", "snapd.service", ""},
          Case{"damaged escape", "", "app-flatpak-a\\xzz-1.scope", "a\\xzz"}}) {
        EXPECT_EQ(platform::sandboxApplication(each.description,
                                               std::string(user) + each.controlGroups + "\n"),
                  each.application)
            << each.what;
    }
    EXPECT_EQ(platform::sandboxApplication("", "12:pids:/x\n1:name=systemd:/snap.a.b.scope\n0::/"),
              "snap.a");
}
