#include "e2e/PlayerFixture.h"

#include <QDBusConnection>
#include <QObject>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <tuple>

namespace fs = std::filesystem;

namespace {

/// What the preferences hold of the player, and whom they ignore.
struct Entry {
    std::optional<int> percent;
    bool muted = false;
    const char* ignored = nullptr;
    const char* name = "stream_player";
};

std::string textOf(const Entry& entry) {
    std::string text = R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0"><dict>)";
    if (entry.percent || entry.muted) {
        text += std::string("<key>Apps</key><dict><key>") + entry.name + "</key><dict>";
        if (entry.percent)
            text += "<key>Volume</key><real>" + std::to_string(*entry.percent) + "</real>";
        text += entry.muted ? "<key>Mute</key><true/></dict></dict>" : "</dict></dict>";
    }
    if (entry.ignored != nullptr)
        text += std::string("<key>CustomIgnoredApps</key><array><string>") + entry.ignored +
                "</string></array>";
    return text + "</dict></plist>";
}

void writeFile(const fs::path& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
}

} // namespace

/// Hears on the session bus what the plug-in tells the application.
class Reports : public QObject {
    Q_OBJECT

  public:
    using Change = std::tuple<uint, int, bool>;

    Reports() {
        const QString interface = QStringLiteral("com.quarnel.Tonvale.Plugin");
        const QString path = QStringLiteral("/com/quarnel/Tonvale/Plugin");
        EXPECT_TRUE(bus_.connect(interface, path, interface, QStringLiteral("ChangedElsewhere"),
                                 this, SLOT(changedElsewhere(uint, int, bool))));
        EXPECT_TRUE(bus_.connect(interface, path, interface, QStringLiteral("NotControllable"),
                                 this, SLOT(notControllable(uint, QString))));
    }
    ~Reports() override { QDBusConnection::disconnectFromBus(bus_.name()); }

    std::vector<Change> changes;
    std::vector<std::pair<uint, QString>> obstacles;

    bool tellLast(uint pid, int percent, bool muted) const {
        const bool told = waitUntil(
            [&] { return !changes.empty() && changes.back() == Change(pid, percent, muted); });
        EXPECT_TRUE(told || changes.empty())
            << std::get<0>(changes.back()) << " " << std::get<1>(changes.back()) << " "
            << std::get<2>(changes.back());
        return told;
    }

  private Q_SLOTS:
    void changedElsewhere(uint pid, int percent, bool muted) {
        changes.emplace_back(pid, percent, muted);
    }
    void notControllable(uint pid, const QString& reason) { obstacles.emplace_back(pid, reason); }

  private:
    QDBusConnection bus_ =
        QDBusConnection::connectToBus(QString::fromLocal8Bit(qgetenv("DBUS_SESSION_BUS_ADDRESS")),
                                      QStringLiteral("reports"));
};

namespace {

class PluginPreferencesTest : public PlayerFixture {
  protected:
    void SetUp() override {
        plugin_.reset();
        application_.reset();
    }
    void TearDown() override {
        fs::remove(own_);
        fs::remove_all(copy_.parent_path());
    }

    const fs::path own_ = fs::path(std::getenv("XDG_CONFIG_HOME")) / "com.quarnel.Tonvale.plist";
    const fs::path copy_ =
        fs::path(std::getenv("TONVALE_LOCAL_LIBRARY")) / "Shared" / "com.quarnel.Tonvale.plist";

    /// As the application does it.
    void save(const Entry& entry) const {
        writeFile(own_.string() + ".new", textOf(entry));
        fs::rename(own_.string() + ".new", own_);
    }

    /// What the first sample that is heard within a second is, and the greatest.
    std::pair<double, double> firstAndGreatest() {
        const auto samples = recorder_->record(900ms).channels[0];
        const auto first = std::find_if(samples.begin(), samples.end(),
                                        [](float sample) { return sample > inaudible; });
        if (first == samples.end())
            return {};
        return {*first, *std::max_element(samples.begin(), samples.end())};
    }

    void setElsewhereOnly(const Player& player, int percent) {
        setElsewhere(onlyStream(player), {std::to_string(percent) + "%"});
    }
};

/// With a session manager that restores to each stream the last volume of one of its kind.
class PluginPreferencesMemoryTest : public PluginPreferencesTest {
  protected:
    static void SetUpTestSuite() {
        session.emplace(support::PrivateAudioSession::Memory::kept);
    }
};

} // namespace

TEST_F(PluginPreferencesMemoryTest, RememberedVolumesHoldWithoutTheApplication) {
    save({50, false});
    startPlugin();
    ASSERT_TRUE(tells("sound server: connected"));
    for (int i = 0; i < 3; ++i) {
        Player player(1, 600ms);
        player.play();
        const auto [first, greatest] = firstAndGreatest();
        EXPECT_NEAR(first, level * gainOf(50), 1e-4);
        EXPECT_NEAR(greatest, level * gainOf(50), 1e-4);
    }
    save({50, true});
    Player muted(1, 600ms);
    muted.play();
    EXPECT_LE(recorder_->record(900ms).peak(), inaudible);
    save({});
    Player plain;
    plain.play();
    EXPECT_TRUE(hearsConstant(level)) << "the session manager would restore another";
}

TEST_F(PluginPreferencesTest, WhatPlaysFollowsTheFileAndDamageDoesNoHarm) {
    save({50, false});
    startPlugin();
    Player player;
    player.play();
    EXPECT_TRUE(hearsConstant(level * gainOf(50)));
    save({20, false});
    EXPECT_TRUE(hearsConstant(level * gainOf(20)));
    writeFile(own_, textOf({90, false}).substr(0, 150));
    EXPECT_TRUE(waitUntil([&] {
        return plugin_->output().find("Couldn't read the preferences") != std::string::npos;
    }));
    player.play();
    EXPECT_TRUE(hearsConstant(2 * level * gainOf(20)));
    save({20, true});
    EXPECT_TRUE(hearsConstant(0));
    fs::remove(own_);
    fs::create_directory(copy_.parent_path());
    writeFile(copy_, textOf({60, false}));
    EXPECT_TRUE(hearsConstant(2 * level * gainOf(60))) << "the copy stands in";
    writeFile(copy_, textOf({}));
    EXPECT_TRUE(hearsConstant(2 * level));
}

TEST_F(PluginPreferencesTest, WhatIsHeardIsNotMadeLouderByWhatIsRemembered) {
    Player quiet;
    quiet.play();
    setElsewhereOnly(quiet, 30);
    EXPECT_TRUE(hearsConstant(level * gainOf(30)));
    save({50, false});
    startPlugin();
    ASSERT_TRUE(tells("wanted 30 %"));
    outlastHold();
    EXPECT_TRUE(hearsConstant(level * gainOf(30)));
}

TEST_F(PluginPreferencesTest, ItReadsTheFileWhenTheApplicationSaysOrComes) {
    // The folder of the link in the middle is not watched.
    const support::PrivateFolder middle;
    const support::PrivateFolder end;
    const auto lead = [&](int percent) {
        const fs::path target = end.path() / std::to_string(percent);
        writeFile(target, textOf({percent, false}));
        fs::remove(middle.path() / "link");
        fs::create_symlink(target, middle.path() / "link");
    };
    writeFile(end.path() / "70", textOf({70, false}));
    lead(70);
    fs::create_symlink(middle.path() / "link", own_);
    application_.emplace();
    startPlugin();
    Player player;
    player.play();
    awaitCheckin(player);
    EXPECT_TRUE(hearsConstant(level * gainOf(70)));
    writeFile(end.path() / "50", textOf({50, false})); // and no new file below
    recorder_->record(200ms);
    lead(50);
    application_->send(kMVCommIgnoreListChanged, 0, 0);
    EXPECT_TRUE(hearsConstant(level * gainOf(50)));
    application_.reset();
    writeFile(end.path() / "30", textOf({30, false}));
    recorder_->record(200ms);
    lead(30);
    application_.emplace();
    EXPECT_TRUE(hearsConstant(level * gainOf(30)));
}

TEST_F(PluginPreferencesTest, TheNewestOfCommandAndFileWins) {
    save({50, false});
    application_.emplace();
    startPlugin();
    Player player;
    player.play();
    awaitCheckin(player);
    application_->setVolume(player.pid(), 80);
    EXPECT_TRUE(hearsConstant(level * gainOf(80)));
    recorder_->record(1100ms);
    save({30, false});
    EXPECT_TRUE(hearsConstant(level * gainOf(30)));
    application_->setVolume(player.pid(), 60);
    EXPECT_TRUE(hearsConstant(level * gainOf(60)));
    application_.reset();
    recorder_->record(1100ms);
    save({30, true});
    EXPECT_TRUE(hearsConstant(0));
}

TEST_F(PluginPreferencesTest, AnotherMixersChangesAreTold) {
    save({50, false});
    application_.emplace();
    startPlugin();
    Player player;
    player.play();
    awaitCheckin(player);
    EXPECT_TRUE(hearsConstant(level * gainOf(50)));
    const Reports reports;
    application_->setVolume(player.pid(), 60);
    EXPECT_TRUE(hearsConstant(level * gainOf(60)));
    outlastHold();
    setElsewhereOnly(player, 30);
    EXPECT_TRUE(reports.tellLast(player.pid(), 30, false));
    runCommand({"pactl", "set-sink-input-mute", std::to_string(onlyStream(player).index), "1"});
    EXPECT_TRUE(reports.tellLast(player.pid(), 30, true));
    save({30, true}); // as the application does with what it hears
    runCommand({"pactl", "set-sink-input-mute", std::to_string(onlyStream(player).index), "0"});
    EXPECT_TRUE(reports.tellLast(player.pid(), 30, false));
    save({30, false});
    EXPECT_EQ(reports.changes.size(), 3U);

    application_.reset();
    setElsewhereOnly(player, 70);
    EXPECT_TRUE(hearsConstant(level * gainOf(70)));
    ASSERT_TRUE(tells("wanted 70 %"));
    EXPECT_EQ(reports.changes.size(), 3U) << "nobody is there to hear it";
    application_.emplace();
    EXPECT_TRUE(reports.tellLast(player.pid(), 70, false));
    EXPECT_TRUE(hearsConstant(level * gainOf(70))) << "although the file says another";
    player.process().stop();
    Player next;
    next.play();
    EXPECT_TRUE(hearsConstant(level * gainOf(70)));
    EXPECT_EQ(reports.changes.size(), 4U);
}

TEST_F(PluginPreferencesTest, AnIgnoredProgramIsFreedAndThenLeftAlone) {
    save({50, false});
    application_.emplace();
    startPlugin();
    Player player;
    player.play();
    awaitCheckin(player);
    EXPECT_TRUE(hearsConstant(level * gainOf(50)));
    outlastHold();
    const Reports reports;
    save({50, false, "STREAM_PLAYER"});
    EXPECT_TRUE(hearsConstant(level));
    ASSERT_TRUE(tells("nothing wanted, ignored"));
    setElsewhereOnly(player, 40);
    EXPECT_TRUE(hearsConstant(level * gainOf(40)));
    save({20, true, "stream_player"});
    player.play();
    EXPECT_TRUE(hearsConstant(level * gainOf(40) + level)) << "its next stream is as it comes";
    EXPECT_TRUE(reports.changes.empty());
    save({20, false});
    EXPECT_TRUE(hearsConstant(2 * level * gainOf(20))) << "it is remembered";
}

TEST_F(PluginPreferencesTest, AProgramIgnoredWhileItIsAwayIsFreedWhenItComes) {
    save({50, false});
    startPlugin();
    ASSERT_TRUE(tells("sound server: connected"));
    save({50, false, "stream_player"});
    Player player(1, 400ms);
    player.play();
    ASSERT_TRUE(tells("nothing wanted, ignored"));
    EXPECT_TRUE(tells("wanted 100 % not muted, has 100 % not muted"));
}

TEST_F(PluginPreferencesTest, NotificationSoundsHaveWhatIsRemembered) {
    save({50, false, nullptr, "Sound Effects"});
    startPlugin();
    const auto remembers = [](const std::string& text) {
        return waitUntil([&] {
            return runCommand({"pw-metadata", "-n", "route-settings"}).output.find(text) !=
                   std::string::npos;
        });
    };
    EXPECT_TRUE(remembers("[0.125,0.125]"));
    save({20, true, nullptr, "Sound Effects"});
    EXPECT_TRUE(remembers(R"("mute":true)"));
    save({20, true, "coreaudiod", "Sound Effects"});
    EXPECT_TRUE(remembers("[1.0,1.0]"));
    EXPECT_TRUE(remembers(R"("mute":false)"));
}

TEST_F(PluginPreferencesTest, WhatCannotBeSetIsToldWithAReason) {
    for (const char* const kind : {"filter", "iec958", "dsd"}) {
        SCOPED_TRACE(kind);
        application_.emplace();
        startPlugin();
        const Reports reports;
        support::ChildProcess player({ODD_PLAYER, kind});
        const auto pid = static_cast<uint>(player.pid());
        const auto tellsOf = [&](std::size_t count, bool isOpen) {
            return waitUntil([&] { return reports.obstacles.size() == count; }) &&
                   reports.obstacles.back().first == pid &&
                   reports.obstacles.back().second.isEmpty() == isOpen;
        };
        EXPECT_TRUE(tellsOf(1, false));
        application_.reset();
        application_.emplace();
        EXPECT_TRUE(tellsOf(2, false)) << "a new application does not know yet";
        player.signal(SIGUSR1);
        EXPECT_TRUE(tellsOf(3, true)) << "one stream is enough";
        Player other;
        other.play();
        awaitCheckin(other);
        outlastHold();
        EXPECT_EQ(reports.obstacles.size(), 3U);
        plugin_.reset();
        application_.reset();
    }
}

#include "PluginPreferencesTest.moc"
