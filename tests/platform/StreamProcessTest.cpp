#include "platform/StreamProcess.h"

#include <gtest/gtest.h>

#include <map>
#include <unistd.h>

using platform::StreamEvidence;
using platform::StreamProcess;

namespace {

constexpr uid_t otherUser = 4242;

/// A process table of plain data.
class Processes : public platform::StreamProcessFacts {
  public:
    struct Process {
        std::string path;
        std::string command;
        uid_t user = ::geteuid();
    };

    explicit Processes(std::map<pid_t, Process> table) : table_(std::move(table)) {}

    std::optional<std::string> executablePath(pid_t process) const override {
        const Process* const found = find(process);
        return found != nullptr && !found->path.empty() ? std::optional(found->path) : std::nullopt;
    }
    std::optional<std::string> commandName(pid_t process) const override {
        const Process* const found = find(process);
        return found != nullptr ? std::optional(found->command) : std::nullopt;
    }
    std::optional<uid_t> user(pid_t process) const override {
        const Process* const found = find(process);
        return found != nullptr ? std::optional(found->user) : std::nullopt;
    }
    std::optional<std::uint64_t> startTime(pid_t process) const override {
        return find(process) != nullptr ? std::optional<std::uint64_t>(1000 + process)
                                        : std::nullopt;
    }

  private:
    const Process* find(pid_t process) const {
        const auto found = table_.find(process);
        return found != table_.end() ? &found->second : nullptr;
    }

    const std::map<pid_t, Process> table_;
};

StreamEvidence throughPulse(const std::string& process, const std::string& binary) {
    StreamEvidence evidence;
    evidence.nodeApi = "pipewire-pulse";
    evidence.nodeProcess = process;
    evidence.nodeBinary = binary;
    evidence.applicationName = "Some Player";
    evidence.clientProcess = "50"; // the daemon
    evidence.clientUser = std::to_string(::geteuid());
    evidence.clientSerial = 77;
    return evidence;
}

StreamEvidence native(const std::string& process) {
    StreamEvidence evidence;
    evidence.applicationName = "Some Player";
    evidence.clientProcess = process;
    evidence.clientSerial = 78;
    return evidence;
}

const Processes processes({{2, {"/usr/lib/systemd/systemd", "kthreadd"}},
                           {50, {"/usr/bin/pipewire", "pipewire-pulse"}},
                           {100, {"/usr/bin/pacat", "paplay"}},
                           {101, {"", "long-named-play"}},
                           {102, {"/opt/x/player", "player", otherUser}},
                           {103, {"", ""}}});

} // namespace

TEST(StreamProcess, ANativeClientIsTheProcessThatTheKernelNames) {
    const auto process = identifyStream(native("100"), processes);
    ASSERT_TRUE(process);
    EXPECT_EQ(process->pid, 100U);
    EXPECT_EQ(process->name, "pacat");
    EXPECT_EQ(process->path, "/usr/bin/pacat");
    EXPECT_EQ(process->startTime, 1100U);
}

TEST(StreamProcess, ANativeClientKeepsItsNumberWhenItsExecutableIsHiddenOrGone) {
    EXPECT_EQ(identifyStream(native("101"), processes)->name, "long-named-play");
    EXPECT_EQ(identifyStream(native("103"), processes)->name, "Some Player");
    const auto gone = identifyStream(native("999"), processes);
    EXPECT_EQ(gone->pid, 999U);
    EXPECT_EQ(gone->name, "Some Player");
    EXPECT_EQ(gone->path, "");
    EXPECT_FALSE(gone->startTime);
}

TEST(StreamProcess, StreamsOfTheSoundServerItselfAreNobodys) {
    EXPECT_FALSE(identifyStream(native("50"), processes));
    EXPECT_FALSE(identifyStream(native(""), processes));
    EXPECT_FALSE(identifyStream({}, processes));
}

TEST(StreamProcess, ATrueClaimOfAPulseClientIsBelieved) {
    const auto byExecutable = identifyStream(throughPulse("100", "pacat"), processes);
    EXPECT_EQ(byExecutable->pid, 100U);
    EXPECT_EQ(byExecutable->path, "/usr/bin/pacat");
    const auto byCommand = identifyStream(throughPulse("101", "long-named-player"), processes);
    EXPECT_EQ(byCommand->pid, 101U);
    EXPECT_EQ(byCommand->name, "long-named-play");
}

TEST(StreamProcess, AClaimThatDoesNotHoldGetsANumberOfItsOwn) {
    struct Case {
        const char* what;
        const char* process;
        const char* binary;
        const char* name;
    };
    for (const Case& each :
         {Case{"number of another namespace", "2", "firefox", "firefox"},
          Case{"process of another user", "102", "player", "player"},
          Case{"no such process", "999", "pacat", "pacat"},
          Case{"no binary", "100", "", "Some Player"}, Case{"no number", "", "pacat", "pacat"},
          Case{"rubbish", "100x", "pacat", "pacat"}, Case{"negative", "-100", "pacat", "pacat"},
          Case{"too large", "99999999999999999999", "pacat", "pacat"}}) {
        const auto process = identifyStream(throughPulse(each.process, each.binary), processes);
        ASSERT_TRUE(process) << each.what;
        EXPECT_EQ(process->pid, StreamProcess::firstPseudoProcess + 77) << each.what;
        EXPECT_TRUE(process->isPseudo()) << each.what;
        EXPECT_EQ(process->name, each.name) << each.what;
        EXPECT_EQ(process->path, "") << each.what;
        EXPECT_FALSE(process->startTime) << each.what;
    }
}

TEST(StreamProcess, AProcessOfTheClientsUserIsBelieved) {
    StreamEvidence evidence = throughPulse("102", "player");
    evidence.clientUser = std::to_string(otherUser);
    EXPECT_EQ(identifyStream(evidence, processes)->pid, 102U);
}

TEST(StreamProcess, PseudoNumbersStayPositiveWhateverTheSerial) {
    StreamEvidence evidence = throughPulse("", "x");
    evidence.clientSerial = 0xFFFFFFFFFFFFFFFF;
    EXPECT_EQ(identifyStream(evidence, processes)->pid, 0x7FFFFFFFU);
}

TEST(StreamProcess, TextsAreCutBetweenCharactersAndMadeValid) {
    struct Case {
        std::string claimed;
        std::string name;
    };
    const std::string full(126, 'a');
    for (const auto& [claimed, name] :
         {Case{full + "\xC3\xA4", full}, Case{full + "bc", full + "b"},
          Case{std::string(125, 'a') + "\xC3\xA4z", std::string(125, 'a') + "\xC3\xA4"},
          Case{"bad\xFF\xC3 end", "bad?? end"}, Case{"\xF0\x9F\x8E\xB5", "\xF0\x9F\x8E\xB5"},
          Case{"overlong \xC0\xAF", "overlong ??"}, Case{"surrogate \xED\xA0\x80", "surrogate ???"},
          Case{"cut \xE2\x82", "cut ??"}})
        EXPECT_EQ(identifyStream(throughPulse("", claimed), processes)->name, name);

    const std::string path = "/" + std::string(2000, 'd') + "/player";
    const Processes deep({{7, {path, "player"}}});
    const auto process = identifyStream(native("7"), deep);
    EXPECT_EQ(process->name, "player");
    EXPECT_EQ(process->path, path.substr(0, StreamProcess::longestPath));
}

TEST(StreamProcess, TheKernelKnowsThisProcess) {
    const auto process = identifyStream(native(std::to_string(::getpid())));
    ASSERT_TRUE(process);
    EXPECT_TRUE(process->path.ends_with("/" + process->name));
    EXPECT_TRUE(process->startTime);
}
