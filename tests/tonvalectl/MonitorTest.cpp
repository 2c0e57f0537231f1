#include "tonvalectl/CtlFixture.h"

#include "support/BusConnection.h"

#include <QDBusVariant>

#include <csignal>

namespace {

constexpr std::uint32_t pid = 4711;
constexpr const char* path = "/com/quarnel/Tonvale/programs/player";

class MonitorTest : public CtlFixture {
  protected:
    void SetUp() override {
        startTonvale();
        plugin_ = &checkIn(pid, "player");
    }

    static bool prints(const support::ChildProcess& monitor, const std::string& text) {
        const bool printed =
            support::waitUntil([&] { return monitor.output().find(text) != std::string::npos; });
        EXPECT_TRUE(printed) << text << " is not in\n" << monitor.output();
        return printed;
    }

    support::ScriptedPlugin* plugin_ = nullptr;
};

QDBusMessage setVolume(int percent) {
    auto call = QDBusMessage::createMethodCall("com.quarnel.Tonvale", path,
                                               "org.freedesktop.DBus.Properties", "Set");
    call.setArguments(
        {"com.quarnel.Tonvale.Program", "Volume", QVariant::fromValue(QDBusVariant(percent))});
    return call;
}

} // namespace

TEST_F(MonitorTest, TellsWhatHappensToProgramsAndEndsWithTheApplication) {
    support::ChildProcess monitor({TONVALECTL, "monitor"});
    ASSERT_TRUE(prints(monitor, "added player 100%\n"));
    EXPECT_TRUE(does({"set", "player", "40"}));
    EXPECT_TRUE(does({"mute", "player"}));
    ASSERT_TRUE(prints(monitor, "changed player 40%\nchanged player 40% muted\n"));
    std::size_t levels = 0;
    EXPECT_TRUE(support::waitUntil([&] {
        plugin_->reportLevel(pid, 0.1F + 0.01F * static_cast<float>(levels++ % 50));
        return monitor.output().find("muted playing\n") != std::string::npos;
    }));
    ASSERT_TRUE(prints(monitor, "changed player 40% muted playing\nchanged player 40% muted\n"))
        << "gained and lost, and nothing of the level between";
    checkIn(4712, "another");
    ASSERT_TRUE(prints(monitor, "added another 100%\n"));
    leave("another");
    ASSERT_TRUE(prints(monitor, "removed another\n"));
    EXPECT_TRUE(does({"ignore", "player"}));
    ASSERT_TRUE(prints(monitor, "removed player\n"));
    tonvale_->stop();
    EXPECT_EQ(monitor.wait(), 0) << monitor.output();
}

TEST_F(MonitorTest, MissesNoneOfManyChanges) {
    constexpr int changes = 300; // at once, while a user makes 60 a second
    support::ChildProcess monitor({TONVALECTL, "monitor", "--json"});
    ASSERT_TRUE(prints(monitor, "\"added\""));
    EXPECT_EQ(monitor.output().find("activity"), std::string::npos) << "which would be an old one";
    support::BusConnection bus(bus_->address());
    for (int i = 0; i < changes; ++i)
        bus->send(setVolume(i % 100));
    std::vector<int> volumes;
    EXPECT_TRUE(support::waitUntil([&] {
        volumes.clear();
        const QByteArray output = QByteArray::fromStdString(monitor.output());
        for (const QByteArray& line : output.left(output.lastIndexOf('\n')).split('\n')) {
            const QJsonObject event = QJsonDocument::fromJson(line).object();
            if (event["event"] == "changed")
                volumes.push_back(event["volume"].toInt());
        }
        return volumes.size() >= changes;
    })) << volumes.size();
    for (std::size_t i = 0; i < volumes.size(); ++i)
        ASSERT_EQ(volumes[i], static_cast<int>(i) % 100);
    tonvale_->stop(SIGKILL);
    EXPECT_EQ(monitor.wait(), 0) << "also when it had no time to say so";
}

TEST_F(MonitorTest, ReportsThatTheBusWasLost) {
    support::ChildProcess monitor({TONVALECTL, "monitor"});
    ASSERT_TRUE(prints(monitor, "added player 100%\n"));
    bus_.reset();
    EXPECT_EQ(monitor.wait(), 8);
    EXPECT_TRUE(
        monitor.output().ends_with("tonvalectl: The connection to the session bus was lost.\n"))
        << monitor.output();
}
