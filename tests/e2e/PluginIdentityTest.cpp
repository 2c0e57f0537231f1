#include "e2e/PluginFixture.h"
#include "e2e/Sandbox.h"

#include "naming/DisambiguatedName.h"
#include "support/NamedCopy.h"
#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"

#include <gmock/gmock.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <unistd.h>

using support::ChildProcess;
using support::Tone;
using support::waitUntil;
using testing::UnorderedElementsAreArray;

namespace {

/// A process of the sound server that is a sink whose sound goes through a filter to the next.
constexpr const char* filterConfiguration = R"(
    context.spa-libs = { support.* = support/libspa-support }
    context.modules = [
        { name = libpipewire-module-protocol-native }
        { name = libpipewire-module-client-node }
        { name = libpipewire-module-adapter }
        { name = libpipewire-module-filter-chain
            args = {
                node.description = "Filter"
                filter.graph = { nodes = [ { type = builtin name = copy label = copy } ] }
                capture.props = { node.name = filter.in media.class = Audio/Sink }
                playback.props = { node.name = filter.out }
            } }
    ])";

/// A program that ends at once with its object, whatever stands before it.
class Player {
  public:
    explicit Player(const Arguments& command, const ChildProcess::Options& options = {})
        : process_(command, options) {}
    ~Player() { process_.stop(SIGKILL); }

    ChildProcess& process() noexcept { return process_; }
    std::uint32_t pid() const { return static_cast<std::uint32_t>(process_.pid()); }

    std::uint32_t childPid() const { return static_cast<std::uint32_t>(childOf(process_.pid())); }

  private:
    ChildProcess process_;
};

/// One that plays silence, and has its stream end and come when it is told to.
class SilentPlayer : public Player {
  public:
    explicit SilentPlayer(const std::string& properties = "{}")
        : Player({STREAM_PLAYER, "1", "0", "0", properties}) {
        EXPECT_TRUE(waitUntil([this] { return process().outputSize() > 0; }));
        play();
    }

    void play() { process().signal(SIGUSR1); }
    void pause() { process().signal(SIGUSR2); }
    void joinFilters() { process().signal(SIGHUP); }
};

std::string listedStreams() {
    return support::runCommand({"pactl", "list", "sink-inputs"}).output;
}

class PluginIdentityTest : public PluginFixture {
  protected:
    /// How often the list of streams has the text.
    static std::size_t countStreams(const std::string& text) {
        return timesIn(listedStreams(), text);
    }

    std::vector<std::uint32_t> pids() const {
        std::vector<std::uint32_t> all;
        for (const MVCommConnectionProcess& program : application_->programs())
            all.push_back(program.pid);
        return all;
    }

    /// Waits until just these are checked in.
    testing::AssertionResult awaitPids(const std::function<std::vector<std::uint32_t>()>& wanted) {
        const auto isSo = [&] {
            return testing::Matches(UnorderedElementsAreArray(wanted()))(pids());
        };
        if (waitUntil(isSo))
            return testing::AssertionSuccess();
        return testing::AssertionFailure()
               << "checked in are " << testing::PrintToString(pids()) << ", wanted "
               << testing::PrintToString(wanted()) << "\n"
               << plugin_->output();
    }

    static std::uint32_t pidOf(const Tone& tone) { return static_cast<std::uint32_t>(tone.pid()); }

    static void write(const std::filesystem::path& file, const std::string& content) {
        std::ofstream(file.string() + ".new") << content;
        std::filesystem::rename(file.string() + ".new", file);
    }

    bool awaitPrograms(std::size_t count) {
        const bool areThere = waitUntil([&] { return pids().size() == count; });
        EXPECT_TRUE(areThere) << testing::PrintToString(pids()) << "\n" << plugin_->output();
        return areThere;
    }

    /// Time enough for the plug-in to have seen all that is there: another program checks in.
    void letItSee() {
        const Tone tone("another", 1000, 0.1);
        awaitProcess(tone.pid());
    }

    const support::PrivateFolder folder_;
    const std::string file_ = support::writeTone(folder_.path() / "tone.wav", toneFrequency, 1);
};

} // namespace

TEST_F(PluginIdentityTest, AProgramIsItsProcessWhicheverWayItPlays) {
    const support::NamedCopy copy("/usr/bin/pw-cat", "coreaudiod");
    const Player native({"pw-cat", "--playback", file_});
    const Player pulse({"paplay", file_});
    const Player alsa({"aplay", "-q", "-D", "pipewire", file_});
    const Player forger({copy.path(), "--playback", file_});
    const struct {
        const Player& player;
        const char* name;
        std::string path;
    } programs[] = {{native, "pw-cat", "/usr/bin/pw-cat"},
                    {pulse, "paplay", "/usr/bin/pacat"},
                    {alsa, "aplay", "/usr/bin/aplay"},
                    {forger, "coreaudiod (program)", copy.path()}};
    for (const auto& [player, name, path] : programs) {
        const auto program = awaitProgram(QString::fromLatin1(name));
        EXPECT_EQ(program.pid, player.pid());
        EXPECT_EQ(program.path.toStdString(), path);
    }
    EXPECT_TRUE(awaitPrograms(4));
}

TEST_F(PluginIdentityTest, AProgramThatCountsForItselfIsFoundAmongTheProcesses) {
    if (!mayMakeNamespaces())
        GTEST_SKIP() << "the system does not allow namespaces";
    // Others may run paplay under the same number at this moment.
    const support::NamedCopy copy("/usr/bin/paplay", "pa-" + std::to_string(::getpid()));
    const Player native(inOwnNamespace({"pw-cat", "--playback", file_}));
    const Player pulse(inOwnNamespace({copy.path(), "--playback", "--file-format=wav", file_}));
    EXPECT_TRUE(awaitPids([&] { return std::vector{native.childPid(), pulse.childPid()}; }));
    EXPECT_EQ(awaitProgram(QString::fromStdString(copy.name())).path.toStdString(), copy.path());
}

TEST_F(PluginIdentityTest, TheProcessesOfASandboxedApplicationAreOneProgram) {
    if (!mayMakeNamespaces())
        GTEST_SKIP() << "the system does not allow namespaces";
    const support::PrivateFolder roots[3];
    std::optional<Player> first(std::in_place,
                                asFlatpak("org.example.Fox", roots[0].path(), {"paplay", file_}));
    EXPECT_TRUE(awaitPids([&] { return std::vector{first->childPid()}; }));
    const std::uint32_t firstPid = first->childPid();
    application_->setMute(firstPid, true);

    std::optional<Player> second(std::in_place, asFlatpak("org.example.Fox", roots[1].path(),
                                                          {"pw-cat", "--playback", file_}));
    std::optional<Player> owl(std::in_place,
                              asFlatpak("org.example.Owl", roots[2].path(), {"paplay", file_}));
    EXPECT_TRUE(waitUntil([] { return countStreams("Sink Input #") == 3; })) << listedStreams();
    letItSee();
    EXPECT_TRUE(awaitPids([&] { return std::vector{firstPid, owl->childPid()}; }));

    first.reset();
    EXPECT_TRUE(awaitPids([&] { return std::vector{second->childPid(), owl->childPid()}; }));
    owl.reset();
    EXPECT_TRUE(hears(0)) << "what was asked for holds for all of the program";
    application_->setMute(second->childPid(), false);
    EXPECT_TRUE(
        waitUntil([&] { return recorder_->record(std::chrono::milliseconds(200)).peak() > 0.5; }));
    second.reset();
    EXPECT_TRUE(awaitPids([] { return std::vector<std::uint32_t>{}; }));
}

TEST_F(PluginIdentityTest, AClaimDoesNotMakeASandboxedApplication) {
    if (!mayMakeNamespaces())
        GTEST_SKIP() << "the system does not allow namespaces";
    const support::PrivateFolder root;
    const Player fox(asFlatpak("org.example.Fox", root.path(), {"pw-cat", "--playback", file_}));
    EXPECT_TRUE(awaitPids([&] { return std::vector{fox.childPid()}; }));

    const std::string claim =
        "pipewire.access=flatpak pipewire.access.portal.app_id=org.example.Fox";
    ChildProcess::Options claiming;
    claiming.environment = {{"PULSE_PROP", claim}};
    const Player pulse({"paplay", file_}, claiming);
    const SilentPlayer native("{ " + claim + " pipewire.sec.pid=1 }");
    EXPECT_TRUE(awaitPids([&] { return std::vector{fox.childPid(), pulse.pid(), native.pid()}; }));
    application_->setMute(fox.childPid(), true);
    EXPECT_TRUE(waitUntil([&] {
        return recorder_->record(std::chrono::milliseconds(200)).peak() > 0.9;
    })) << "the others are not muted";
}

TEST_F(PluginIdentityTest, AProgramKeepsItsConnectionWhileItHasNoStream) {
    SilentPlayer player;
    EXPECT_TRUE(awaitPids([&] { return std::vector{player.pid()}; }));
    EXPECT_TRUE(waitUntil([] { return countStreams("Sink Input #") == 1; }));
    application_->setVolume(player.pid(), 50);
    player.pause();
    EXPECT_TRUE(waitUntil([] { return countStreams("Sink Input #") == 0; }));
    letItSee();
    EXPECT_TRUE(awaitPids([&] { return std::vector{player.pid()}; }));
    player.play();
    EXPECT_TRUE(waitUntil([] { return countStreams(" 50%") == 2; }))
        << "both channels of the new stream have the program's volume";
    player.process().stop(SIGKILL);
    EXPECT_TRUE(awaitPids([] { return std::vector<std::uint32_t>{}; }));
}

TEST_F(PluginIdentityTest, WhatAStreamSaysLaterCountsAsWell) {
    SilentPlayer player;
    EXPECT_TRUE(awaitPids([&] { return std::vector{player.pid()}; }));
    player.joinFilters();
    EXPECT_TRUE(awaitPids([] { return std::vector<std::uint32_t>{}; }));
    EXPECT_TRUE(player.process().isRunning());
    player.pause();
    player.play();
    EXPECT_TRUE(awaitPids([&] { return std::vector{player.pid()}; }));
}

TEST_F(PluginIdentityTest, AClientFromElsewhereHasTheSameNumberEachTime) {
    const std::string port = "47133";
    const auto module =
        support::runCommand({"pactl", "load-module", "module-native-protocol-tcp", "port=" + port});
    ASSERT_EQ(module.status, 0);
    ChildProcess::Options remote;
    remote.environment = {{"PULSE_SERVER", "tcp:127.0.0.1:" + port}};
    std::optional<Player> one(std::in_place, Arguments{"paplay", file_}, remote);
    std::optional<Player> other(std::in_place, Arguments{"paplay", file_}, remote);
    EXPECT_TRUE(waitUntil([] { return countStreams("Sink Input #") == 2; })) << listedStreams();
    letItSee();
    EXPECT_TRUE(awaitPrograms(1));
    const auto numbers = pids();
    for (const std::uint32_t number : numbers)
        EXPECT_GE(number, 0x40000000U);
    plugin_.reset();
    startPlugin();
    EXPECT_TRUE(awaitPids([&numbers] { return std::vector(numbers); }));
    one.reset();
    letItSee();
    EXPECT_TRUE(awaitPids([&numbers] { return std::vector(numbers); }));
    other.reset();
    EXPECT_TRUE(awaitPrograms(0));
    support::runCommand({"pactl", "unload-module", module.output});
}

TEST_F(PluginIdentityTest, TheProcessesOfAnApplicationFollowOneSlider) {
    std::optional<Tone> first(std::in_place, Tone::Player::pwCat, toneFrequency, 0.2);
    EXPECT_TRUE(awaitPids([&] { return std::vector{pidOf(*first)}; }));
    const std::uint32_t firstPid = pidOf(*first);
    constexpr unsigned otherFrequency = 1000;
    std::optional<Tone> second(std::in_place, Tone::Player::pwCat, otherFrequency, tonePeak);
    EXPECT_TRUE(hears(tonePeak, otherFrequency));
    letItSee();
    EXPECT_TRUE(awaitPids([&] { return std::vector{firstPid}; }));
    application_->forgetLevels();
    EXPECT_TRUE(reportsLevel(firstPid, tonePeak)) << "the loudest counts";
    application_->setVolume(firstPid, 50);
    EXPECT_TRUE(hears(0.2 * gainOf(50)) && hears(tonePeak * gainOf(50), otherFrequency));

    const std::uint32_t secondPid = pidOf(*second);
    first.reset();
    EXPECT_TRUE(awaitPids([&] { return std::vector{secondPid}; }));
    application_->setVolume(secondPid, 70);
    EXPECT_TRUE(hears(tonePeak * gainOf(70), otherFrequency));
    const Tone third(Tone::Player::pwCat, toneFrequency, 0.2);
    EXPECT_TRUE(hears(0.2 * gainOf(70))) << "the next process as well";
    second.reset();
    EXPECT_TRUE(awaitPids([&] { return std::vector{pidOf(third)}; }));
}

TEST_F(PluginIdentityTest, NamesAreInTheLanguageOfTheApplicationAndFollowTheEntries) {
    const std::filesystem::path config = std::getenv("XDG_CONFIG_HOME");
    const std::filesystem::path entries =
        std::filesystem::path(std::getenv("XDG_DATA_HOME")) / "applications";
    const auto speak = [&](const std::string& language) {
        write(config / "com.quarnel.Tonvale.plist",
              R"(<plist version="1.0"><dict><key>MessageLanguage</key><string>)" + language +
                  "</string></dict></plist>");
    };
    const support::NamedCopy program("/usr/bin/pw-cat", "jukebox-bin");
    const auto describe = [&](const std::string& german) {
        std::filesystem::create_directories(entries);
        write(entries / "org.example.Jukebox.desktop",
              "[Desktop Entry]\nType=Application\nName=Jukebox\nName[de]=" + german +
                  "\nExec=" + program.path() + " %U\n");
    };
    speak("de_DE");
    describe("Musiktruhe");
    plugin_.reset();
    const Player player({program.path(), "--playback", file_});
    startPlugin(); // all tests run in the language C
    EXPECT_EQ(awaitProgram("Musiktruhe").pid, player.pid());
    EXPECT_TRUE(tells("Musiktruhe (pid " + std::to_string(player.pid()) + ", " + program.path()));
    EXPECT_TRUE(tells("    This application starts the program. (" +
                      (entries / "org.example.Jukebox.desktop").string() + ")\n"));
    speak("fr_FR");
    EXPECT_EQ(awaitProgram("Jukebox").pid, player.pid());
    speak("de_AT.UTF-8");
    awaitProgram("Musiktruhe");
    describe("Musikschrank");
    EXPECT_EQ(awaitProgram("Musikschrank").pid, player.pid());
    application_->setVolume(player.pid(), 50);
    EXPECT_TRUE(tells("wanted 50 % not muted, has 50 % not muted"));
    std::filesystem::remove_all(entries);
    EXPECT_EQ(awaitProgram("jukebox").pid, player.pid());
    EXPECT_TRUE(awaitPrograms(1));
    EXPECT_TRUE(tells("    The program's file has this name.\n"));
    std::filesystem::remove(config / "com.quarnel.Tonvale.plist");
}

TEST_F(PluginIdentityTest, ProgramsOfOneFileNameAreTwoWhileBothAreThere) {
    const std::filesystem::path build = std::filesystem::path(STREAM_PLAYER).parent_path();
    if (distinguishingFolders((build / "a/jukebox").string(), "jukebox").empty())
        GTEST_SKIP() << "the build lies in a temporary folder, which tells nothing";
    const support::ScopedVariable place("TMPDIR", build);
    const support::PrivateFolder programs;
    const auto start = [&](const char* folder) {
        const std::filesystem::path program = programs.path() / folder / "jukebox";
        std::filesystem::create_directory(program.parent_path());
        std::filesystem::copy_file("/usr/bin/pw-cat", program,
                                   std::filesystem::copy_options::skip_existing);
        return std::make_unique<Player>(Arguments{program, "--playback", file_});
    };
    auto first = start("a");
    EXPECT_EQ(awaitProgram("jukebox").pid, first->pid());
    auto other = start("b");
    EXPECT_EQ(awaitProgram("jukebox (b)").pid, other->pid());
    first.reset();
    EXPECT_TRUE(awaitPids([&] { return std::vector{other->pid()}; }));
    EXPECT_EQ(awaitProgram("jukebox (b)").pid, other->pid()) << "it keeps its name";
    auto another = start("b");
    EXPECT_TRUE(waitUntil([] { return countStreams("Sink Input #") == 2; })) << listedStreams();
    letItSee();
    EXPECT_TRUE(awaitPids([&] { return std::vector{other->pid()}; })) << "it is the same program";
    other.reset();
    another.reset();
    EXPECT_TRUE(awaitPrograms(0));
    const auto alone = start("b");
    EXPECT_EQ(awaitProgram("jukebox").pid, alone->pid());
}

TEST_F(PluginIdentityTest, AToolThatPlaysForAnApplicationIsThatApplication) {
    const std::filesystem::path entries =
        std::filesystem::path(std::getenv("XDG_DATA_HOME")) / "applications";
    const support::NamedCopy program("/bin/bash", "chatter");
    std::filesystem::create_directories(entries);
    write(entries / "org.example.Chatter.desktop",
          "[Desktop Entry]\nType=Application\nName=Chatter\nExec=" + program.path() + "\n");
    const Player chat({program.path(), "-c", "pw-cat --playback " + file_ + "; true"});
    EXPECT_EQ(awaitProgram("Chatter").pid, chat.pid());
    EXPECT_TRUE(tells("    This application starts the program. (" +
                      (entries / "org.example.Chatter.desktop").string() + ")\n"))
        << "what is said of the application, not of its tool";
    ::kill(static_cast<pid_t>(chat.childPid()), SIGKILL);
    std::filesystem::remove_all(entries);
}

TEST_F(PluginIdentityTest, LoopbacksAndFiltersAreNoProgramsAndNeverWritten) {
    const Player loopback({"pw-loopback"});
    const auto configuration = folder_.path() / "filter.conf";
    std::ofstream(configuration) << filterConfiguration;
    const Player filter({"pipewire", "-c", configuration});
    const auto module = support::runCommand({"pactl", "load-module", "module-loopback"});
    EXPECT_TRUE(waitUntil([] { return countStreams("Sink Input #") == 3; })) << listedStreams();
    letItSee();
    EXPECT_TRUE(awaitPrograms(0));
    for (const std::uint32_t pid : {loopback.pid(), filter.pid(),
                                    static_cast<std::uint32_t>(session->processOf(
                                        support::PrivateAudioSession::pulseService))}) {
        application_->setVolume(pid, 10);
        application_->setMute(pid, true);
    }
    letItSee();
    EXPECT_EQ(countStreams("Mute: no"), 3U) << listedStreams();
    EXPECT_EQ(countStreams(" 10%"), 0U) << listedStreams();
    support::runCommand({"pactl", "unload-module", module.output});
}
