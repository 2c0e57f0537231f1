#include "plugin/connection/AppConnection.h"

#include "comm/MVCommSocketPath.h"
#include "naming/ApplicationName.h"
#include "platform/loop/RunLoop.h"
#include "platform/loop/UnixSocket.h"
#include "platform/processes/ProcessInfo.h"
#include "plugin/identity/ProgramProcess.h"
#include "plugin/programs/ProgramTable.h"
#include "support/ChildProcess.h"
#include "support/ManualClock.h"
#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"
#include "support/SystemLogRecorder.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <optional>
#include <string>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

using platform::FileDescriptor;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

ProgramProcess processOf(std::uint32_t pid, const std::string& name) {
    return {.pid = pid, .name = name, .path = "/opt/player/player", .startTime = {}};
}

ProgramProcess playerOf(std::uint32_t pid) {
    return processOf(pid, "player " + std::to_string(pid));
}

/// The application's side of the socket, in a folder of its own.
class Application {
  public:
    Application() : variable_("TONVALE_SOCKET_DIR", folder_.path().string()) {}

    void listen() {
        listening_ = platform::makeUnixSocket();
        ASSERT_TRUE(platform::bindUnixSocket(listening_.get(), MVCommMainSocketPath()));
        ASSERT_EQ(::listen(listening_.get(), 16), 0);
    }
    void quit() {
        listening_.reset();
        std::filesystem::remove(MVCommMainSocketPath());
    }
    FileDescriptor accept() const {
        return FileDescriptor(::accept4(listening_.get(), nullptr, nullptr, SOCK_NONBLOCK));
    }

  private:
    const support::PrivateFolder folder_;
    const support::ScopedVariable variable_;
    FileDescriptor listening_;
};

std::string received(const FileDescriptor& socket) {
    std::array<char, 8192> bytes{};
    const ssize_t size = ::recv(socket.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
    return {bytes.data(), size > 0 ? static_cast<std::size_t>(size) : 0};
}

MVCommCheckinMessage checkinIn(const std::string& bytes) {
    MVCommCheckinMessage checkin{};
    EXPECT_EQ(bytes.size(), sizeof checkin);
    std::memcpy(&checkin, bytes.data(), std::min(bytes.size(), sizeof checkin));
    return checkin;
}

std::vector<float> levelsReceived(const FileDescriptor& socket) {
    std::vector<float> levels;
    MVCommActivityMessage message{};
    while (::recv(socket.get(), &message, sizeof message, MSG_DONTWAIT) == sizeof message) {
        EXPECT_EQ(message.messageID, std::uint32_t{kMVCommActivity});
        levels.push_back(message.level);
    }
    return levels;
}

class Commands : public AppConnection::Listener {
  public:
    void commandArrived(const MVCommConsoleMessage& command) override {
        arrived.push_back(std::to_string(command.type) + "=" + std::to_string(command.value));
    }
    void connectionLost() override { lost = true; }

    std::vector<std::string> arrived;
    bool lost = false;
};

constexpr std::uint32_t client = 40;

class ApplicationTest : public testing::Test {
  protected:
    // What limits a line in the log outlives the test.
    ApplicationTest() { clock_.advance(std::chrono::hours(++testsBefore_)); }

    static inline int testsBefore_ = 0;
    support::ManualClock clock_;
    support::SystemLogRecorder log_;
    Application application_;
    platform::RunLoop loop_;
};

/// With a connection of the process 321.
class AppConnectionTest : public ApplicationTest {
  protected:
    AppConnectionTest() {
        application_.listen();
        connection_ = AppConnection::open(loop_, playerOf(321), commands_);
        peer_ = application_.accept();
        received(peer_); // the check-in
    }

    Commands commands_;
    std::unique_ptr<AppConnection> connection_;
    FileDescriptor peer_;
};

class ProgramTableTest : public ApplicationTest,
                         protected ProgramTable::Listener,
                         protected Program::Listener {
  protected:
    void programGoes(Program& program) override { gone_.push_back(program.process().pid); }
    void connectionsChanged() override {}
    void programCommanded(Program&, const WantedVolume& change) override {
        commanded_.push_back(change);
    }
    void programChangedElsewhere(Program& program, const WantedVolume&) override {
        changedElsewhere_.push_back(program.wanted().percent());
    }

    static std::uint32_t pidOf(const support::ChildProcess& child) {
        return static_cast<std::uint32_t>(child.pid());
    }
    static ProgramProcess named(const std::string& name, const support::ChildProcess& child) {
        ProgramProcess process = processOf(pidOf(child), name);
        process.startTime = platform::processStartTime(child.pid());
        return process;
    }

    void advance(std::chrono::milliseconds time) {
        clock_.advance(time);
        for (int i = 0; i < 3; ++i)
            loop_.turn();
    }

    /// The program of the process 321, which has checked in at `peer_`.
    Program& joined() {
        application_.listen();
        Program& program = table_.join({playerOf(321)}, client);
        advance({});
        peer_ = application_.accept();
        EXPECT_EQ(received(peer_).size(), sizeof(MVCommCheckinMessage));
        return program;
    }

    FileDescriptor peer_;
    std::vector<std::uint32_t> gone_;
    std::vector<WantedVolume> commanded_;
    std::vector<std::optional<int>> changedElsewhere_;
    const ApplicationReports reports_;
    ProgramTable table_{loop_, *this, *this, reports_};
};

} // namespace

TEST_F(AppConnectionTest, ChecksInWithOneMessageOfFixedLength) {
    ProgramProcess process = playerOf(321);
    process.name.assign(longestApplicationName, 'n');
    process.path.assign(ProgramProcess::longestPath, 'p');
    connection_ = AppConnection::open(loop_, process, commands_);
    const MVCommCheckinMessage checkin = checkinIn(received(application_.accept()));
    EXPECT_EQ(checkin.messageID, std::uint32_t{kMVCommCheckin});
    EXPECT_EQ(checkin.pid, 321U);
    EXPECT_EQ(std::string(checkin.name), process.name);
    EXPECT_EQ(std::string(checkin.path), process.path);
}

TEST_F(AppConnectionTest, PassesOnCommandsForItsProgramHoweverTheyAreCut) {
    const std::array<MVCommConsoleMessage, 6> sent{{{kMVCommSetVolume, 321, 0, 40},
                                                    {kMVCommSetVolume, 322, 0, 10},
                                                    {kMVCommIgnoreListChanged, 0, 0, 0},
                                                    {1234, 321, 0, 5},
                                                    {kMVCommSetMute, 321, 0, 1},
                                                    {kMVCommSetVolume, 321, 0, -7}}};
    const auto bytes = std::as_bytes(std::span(sent));
    for (std::size_t step = 1; step <= bytes.size(); step += 6) {
        commands_.arrived.clear();
        for (std::size_t at = 0; at < bytes.size(); at += step) {
            const std::size_t size = std::min(step, bytes.size() - at);
            ASSERT_EQ(::send(peer_.get(), bytes.data() + at, size, 0), static_cast<ssize_t>(size));
            loop_.turn();
        }
        EXPECT_THAT(commands_.arrived, ElementsAre("9=40", "11=0", "10=1", "9=-7")) << step;
    }
    EXPECT_EQ(log_.count("Ignored a command of unknown type 1234"), 1U);
    EXPECT_FALSE(commands_.lost);
}

TEST_F(AppConnectionTest, LogsMalformedCommandsOnceASecondAndIgnoresThem) {
    const auto send = [&](const MVCommConsoleMessage& command, std::size_t size) {
        EXPECT_EQ(::send(peer_.get(), &command, size, 0), static_cast<ssize_t>(size));
        loop_.turn();
    };
    const std::array<std::pair<MVCommConsoleMessage, const char*>, 4> malformed{
        {{{12, 321, 0, 5}, "unknown type 12"},
         {{kMVCommSetVolume, 321, -7, 40}, "reserved field: -7"},
         {{kMVCommSetMute, 321, 0, 2}, "invalid value: 2"},
         {{kMVCommSetMute, 321, 0, -1}, "invalid value: -1"}}};
    for (const auto& [command, line] : malformed) {
        for (int i = 0; i < 100; ++i)
            send(command, sizeof command);
        EXPECT_EQ(log_.count(line), 1U);
        clock_.advance(std::chrono::seconds(1));
    }
    EXPECT_THAT(commands_.arrived, IsEmpty());
    EXPECT_FALSE(commands_.lost);
    send({kMVCommSetVolume, 321, 0, 40}, 5);
    peer_.reset();
    loop_.turn();
    EXPECT_TRUE(log_.contains("cut off after byte 5"));
    EXPECT_THAT(commands_.arrived, IsEmpty());
    EXPECT_TRUE(commands_.lost);
}

TEST_F(AppConnectionTest, NeverWaitsForAnApplicationThatDoesNotRead) {
    for (int i = 0; i < 100000; ++i)
        connection_->sendLevel(0.5F);
    EXPECT_EQ(received(peer_).size() % 4, 0U);
    EXPECT_FALSE(commands_.lost);
}

TEST_F(ProgramTableTest, SendsLevelsAndASingleZeroAtTheEnd) {
    Program& program = joined();
    for (const float level : {0.0F, 0.5F, 0.25F, 0.0F, 0.0F})
        program.report(level);
    EXPECT_THAT(levelsReceived(peer_), ElementsAre(0.5F, 0.25F, 0.0F));
    program.report(1.0F);
    table_.clientGone(client);
    EXPECT_THAT(levelsReceived(peer_), ElementsAre(1.0F, 0.0F));
    EXPECT_THAT(gone_, ElementsAre(321U));
}

TEST_F(ProgramTableTest, KnowsWhatIsWantedWhoeverAskedForIt) {
    Program& program = joined();
    const std::array<MVCommConsoleMessage, 2> sent{
        {{kMVCommSetVolume, 321, 0, 150}, {kMVCommSetMute, 321, 0, 1}}};
    ASSERT_EQ(::send(peer_.get(), sent.data(), sizeof sent, 0), ssize_t{sizeof sent});
    advance({});
    const WantedVolume full{1.0F, std::nullopt};
    const WantedVolume silence{std::nullopt, true};
    EXPECT_THAT(commanded_, ElementsAre(full, silence));
    EXPECT_EQ(program.wanted(), (WantedVolume{1.0F, true}));
    EXPECT_THAT(changedElsewhere_, IsEmpty());

    program.changedElsewhere(silence); // which it is
    program.changedElsewhere({1.728F, std::nullopt});
    EXPECT_THAT(changedElsewhere_, ElementsAre(120));
    EXPECT_EQ(program.wanted(), (WantedVolume{1.728F, true}));
}

TEST_F(ProgramTableTest, ComesBackToAnApplicationThatWasStartedAgain) {
    table_.join({playerOf(1)}, client);
    table_.join({playerOf(2)}, client);
    advance({});
    application_.listen();
    advance(Backoff::longest);
    const FileDescriptor first = application_.accept();
    const FileDescriptor second = application_.accept();
    EXPECT_TRUE(first && second);

    application_.quit();
    received(first);
    ::shutdown(first.get(), SHUT_RDWR);
    ::shutdown(second.get(), SHUT_RDWR);
    advance({});
    application_.listen();
    EXPECT_FALSE(application_.accept());
    table_.connectNow();
    EXPECT_TRUE(application_.accept() && application_.accept());
    advance(Backoff::longest);
    EXPECT_FALSE(application_.accept());
}

TEST_F(ProgramTableTest, AllProcessesOfOneNameAreOneProgramThatChecksInWithTheNextMainOne) {
    application_.listen();
    support::ChildProcess first({"sleep", "60"});
    support::ChildProcess second({"sleep", "60"});
    support::ChildProcess helper({"sleep", "60"});
    Program& program = table_.join({named("Fox", first)}, client);
    EXPECT_EQ(&table_.join({named("Fox", helper), named("Fox", second)}, client + 1), &program);
    EXPECT_EQ(table_.programs().size(), 1U);
    table_.clientGone(client);
    advance({});
    const FileDescriptor peer = application_.accept();
    EXPECT_EQ(checkinIn(received(peer)).pid, pidOf(first));
    EXPECT_FALSE(application_.accept());
    program.report(0.5F);

    first.stop(SIGKILL);
    advance({});
    EXPECT_THAT(levelsReceived(peer), ElementsAre(0.5F, 0.0F));
    EXPECT_EQ(::recv(peer.get(), nullptr, 0, MSG_DONTWAIT), 0);
    const FileDescriptor next = application_.accept();
    const auto checkin = checkinIn(received(next));
    EXPECT_EQ(checkin.pid, pidOf(second)) << "the main process, although it has no stream";
    EXPECT_STREQ(checkin.name, "Fox");
    const MVCommConsoleMessage command{kMVCommSetVolume, static_cast<std::int32_t>(pidOf(second)),
                                       0, 50};
    ASSERT_EQ(::send(next.get(), &command, sizeof command, 0), ssize_t{sizeof command});
    advance({});
    EXPECT_EQ(program.wanted().percent(), 50);

    second.stop(SIGKILL);
    advance({});
    const FileDescriptor last = application_.accept();
    EXPECT_EQ(checkinIn(received(last)).pid, pidOf(helper));
    EXPECT_THAT(gone_, IsEmpty());
    EXPECT_EQ(program.wanted().percent(), 50) << "it is the program's";

    helper.stop(SIGKILL);
    advance({});
    EXPECT_EQ(::recv(last.get(), nullptr, 0, MSG_DONTWAIT), 0);
    EXPECT_THAT(gone_, ElementsAre(pidOf(helper)));
}

TEST_F(ProgramTableTest, AProcessIsOfTheProgramThatItHasJoinedLast) {
    support::ChildProcess main({"sleep", "60"});
    support::ChildProcess helper({"sleep", "60"});
    Program& fox = table_.join({named("Fox", helper), named("Fox", main)}, client);
    EXPECT_EQ(fox.process().pid, pidOf(main));
    Program& owl = table_.join({named("Owl", main)}, client + 1);
    EXPECT_EQ(owl.process().pid, pidOf(main));
    EXPECT_EQ(fox.process().pid, pidOf(helper)) << "two programs of one number get each command";
    const auto known = table_.find(StreamProcess{pidOf(main), named("", main).startTime});
    EXPECT_TRUE(known && known->name == "Owl");
    EXPECT_FALSE(table_.find(StreamProcess{pidOf(main), 1}));
}

TEST_F(ProgramTableTest, ANewNameMovesTheProcesses) {
    support::ChildProcess main({"sleep", "60"});
    support::ChildProcess helper({"sleep", "60"});
    support::ChildProcess alone({"sleep", "60"});
    table_.join({named("Fox", helper), named("Fox", main)}, client);
    table_.join({named("Fox", alone)}, client);
    Program& owl = table_.join({{.pid = 0, .name = "Owl", .path = {}, .startTime = {}}}, client);
    const auto renamed = [&](const std::string& fox) {
        table_.rename([&](const ProgramProcess& process) {
            StreamPlayer player{process};
            if (process.name != "Owl")
                player.process.name = fox;
            if (process.pid == pidOf(helper))
                player.main = named(fox, main);
            if (process.pid == pidOf(main))
                player.process.name = "not by itself";
            return player;
        });
        std::vector<std::string> names;
        for (const auto& program : table_.programs())
            names.push_back(program->process().name);
        return names;
    };
    EXPECT_THAT(renamed("Fox"), ElementsAre("Fox", "Owl")) << "nothing has changed";
    EXPECT_THAT(renamed("Fuchs"), ElementsAre("Owl", "Fuchs"));
    const Program* const fuchs = table_.find(std::string("Fuchs"));
    ASSERT_NE(fuchs, nullptr);
    EXPECT_EQ(fuchs->process().pid, pidOf(main));
    EXPECT_EQ(fuchs->lifetime().members().size(), 3U);
    EXPECT_THAT(renamed("Owl"), ElementsAre("Owl"));
    EXPECT_EQ(owl.lifetime().members().size(), 4U);
}

TEST_F(ProgramTableTest, AReusedPidIsAnotherProgram) {
    ProgramProcess process = playerOf(static_cast<std::uint32_t>(::getpid()));
    process.startTime = platform::processStartTime(::getpid());
    Program& earlier = table_.join({process}, client);
    EXPECT_EQ(&table_.join({process}, client), &earlier);
    process.startTime = *process.startTime + 1;
    table_.join({process}, client);
    EXPECT_THAT(gone_, ElementsAre(process.pid));
    EXPECT_EQ(table_.programs().size(), 1U);
}

TEST_F(ProgramTableTest, AProgramWithoutAProcessEndsWithItsLastClientAndReturnsUnchanged) {
    const ProgramProcess remote = processOf(0, "one");
    Program& one = table_.join({remote}, client);
    EXPECT_EQ(&table_.join({remote}, client + 1), &one);
    const std::uint32_t number = one.process().pid;
    const std::uint32_t other = table_.join({processOf(0, "two")}, client + 2).process().pid;
    EXPECT_TRUE(PseudoPids::isOne(number) && PseudoPids::isOne(other));
    EXPECT_NE(number, other);
    table_.clientGone(client);
    EXPECT_THAT(gone_, IsEmpty());
    table_.clientGone(client + 1);
    table_.clientGone(client + 2);
    EXPECT_THAT(gone_, ElementsAre(number, other));
    EXPECT_EQ(table_.join({processOf(0, "two")}, client).process().pid, other);
    EXPECT_EQ(table_.join({remote}, client).process().pid, number);
}

TEST(PseudoPids, AreOfOneProgramEachAlsoWhereTheirNamesSuggestTheSame) {
    // Two names of one hash.
    const std::string name = "name 210927";
    const std::string twin = "name 389256";
    PseudoPids numbers;
    const std::uint32_t first = numbers.take(name);
    const std::uint32_t second = numbers.take(twin);
    EXPECT_EQ(second, first + 1);
    EXPECT_EQ(numbers.take(name), first);
    EXPECT_EQ(numbers.take(twin), second);
    numbers.release(name);
    numbers.release(twin);
    EXPECT_EQ(numbers.take(twin), second) << "it keeps what it has been known by";
}
