#include "comm/PluginBusClient.h"

#include "support/BusConnection.h"
#include "support/PrivateBus.h"
#include "support/SystemLogRecorder.h"

#include <gtest/gtest.h>

#include <QDBusContext>
#include <QObject>
#include <QStringList>

#include <optional>
#include <stdexcept>
#include <vector>

namespace {

const QString name = "com.quarnel.Tonvale.Plugin";

/// Records the calls, and answers.
class Taker : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.quarnel.Tonvale.Plugin")

  public:
    QStringList taken_;
    bool answers_ = true;

  public Q_SLOTS:
    Q_SCRIPTABLE QList<NamedSetting> Remember(const QString& file, const QByteArray& preferences,
                                              const QStringList& news) {
        taken_ += file + QString::fromUtf8(preferences) + news.join('+');
        setDelayedReply(!answers_);
        return {{"Player", {30, true}}};
    }
    Q_SCRIPTABLE QString CrashFolder() const { return QStringLiteral("/crashes"); }
};

/// A program on the bus that may be the plug-in.
class Peer {
  public:
    explicit Peer(const support::PrivateBus& bus) : bus_(bus.address()) {}

    void own() { EXPECT_TRUE(bus_->registerService(name)); }
    void serve(Taker& taker) {
        EXPECT_TRUE(bus_->registerObject("/com/quarnel/Tonvale/Plugin", &taker,
                                         QDBusConnection::ExportScriptableSlots));
    }
    void say(const QString& member, const QVariantList& arguments,
             const QString& path = "/com/quarnel/Tonvale/Plugin") {
        EXPECT_TRUE(bus_.say(path, name, member, arguments));
    }

  private:
    support::BusConnection bus_;
};

class PluginBusClientTest : public testing::Test {
  protected:
    static void SetUpTestSuite() { bus.emplace(); }
    static void TearDownTestSuite() { bus.reset(); }

    PluginBusClient::Handlers record() {
        return {[this](std::uint32_t pid, const ProgramSetting& setting) {
                    heard_ += QStringLiteral("%1 %2 %3")
                                  .arg(pid)
                                  .arg(setting.percent)
                                  .arg(int{setting.muted});
                },
                [this](std::uint32_t pid, const QString& reason) {
                    heard_ += QStringLiteral("%1 %2").arg(pid).arg(reason);
                    if (reason == QLatin1String("throw"))
                        throw std::runtime_error("from a handler");
                },
                [this] { heard_ += "gone"; }, [this] { ++comings_; }};
    }

    bool hears(const QStringList& expected) {
        return support::waitUntil([&] { return heard_ == expected; });
    }

    static inline std::optional<support::PrivateBus> bus;
    QStringList heard_;
    int comings_ = 0;
};

} // namespace

TEST_F(PluginBusClientTest, HearsTheOwnerOfTheNameOnly) {
    const support::SystemLogRecorder log;
    std::optional<Peer> plugin(std::in_place, *bus);
    plugin->own();
    const PluginBusClient reports(record());
    Peer stranger(*bus);
    const QString changed = "ChangedElsewhere";
    const QString refused = "NotControllable";
    // Also before it can be known who owns the name.
    stranger.say(changed, {1U, 1, true});
    plugin->say(changed, {4000000000U, 55, true});
    plugin->say(refused, {2U, "throw"});
    plugin->say(refused, {2U, QString()});
    ASSERT_TRUE(hears({"4000000000 55 1", "2 throw", "2 "})) << heard_.join(' ').toStdString();
    EXPECT_TRUE(log.contains("from a handler"));

    heard_.clear();
    stranger.say(changed, {1U, 1, true});
    plugin->say(changed, {"1", 1, true}); // of other types
    plugin->say(changed, {3U, 3, true}, "/elsewhere");
    plugin->say(changed, {3U, -3, false});
    ASSERT_TRUE(hears({"3 -3 0"})) << heard_.join(' ').toStdString();

    heard_.clear();
    plugin.reset();
    ASSERT_TRUE(hears({"gone"}));
    stranger.own();
    stranger.say(changed, {4U, 4, false});
    ASSERT_TRUE(hears({"gone", "4 4 0"})) << "now it is the plug-in";
}

TEST_F(PluginBusClientTest, HearsAPluginThatComesLater) {
    const PluginBusClient reports(record());
    Peer plugin(*bus);
    plugin.own();
    plugin.say("ChangedElsewhere", {2U, 2, false});
    EXPECT_TRUE(hears({"2 2 0"})) << heard_.join(' ').toStdString();
}

TEST_F(PluginBusClientTest, TellsThePluginThatIsThereAndHearsItsAnswer) {
    using Newer = std::optional<QList<NamedSetting>>;
    const support::SystemLogRecorder log;
    std::vector<Newer> answers;
    const PreferencesMessage word{"/file", "bytes", {"a", "b"}};
    PluginBusClient reports(record());
    const auto tell = [&] {
        return reports.tell(word, [&](const Newer& newer) { answers.push_back(newer); });
    };
    EXPECT_FALSE(tell()) << "nobody is there";
    Taker taker;
    std::optional<Peer> plugin(std::in_place, *bus);
    plugin->serve(taker);
    plugin->own();
    ASSERT_TRUE(support::waitUntil([this] { return comings_ == 1; }));
    EXPECT_TRUE(tell());
    ASSERT_TRUE(support::waitUntil([&] { return answers.size() == 1; }));
    EXPECT_EQ(answers[0], Newer({{"Player", {30, true}}}));
    EXPECT_EQ(taker.taken_, QStringList("/filebytesa+b"));

    taker.answers_ = false;
    EXPECT_TRUE(tell());
    plugin.reset();
    ASSERT_TRUE(support::waitUntil([&] { return answers.size() == 2; }));
    EXPECT_EQ(answers[1], Newer()) << "it has gone";
    EXPECT_FALSE(log.contains("isn't told"));
    Peer older(*bus);
    older.own();
    ASSERT_TRUE(support::waitUntil([this] { return comings_ == 2; }));
    EXPECT_TRUE(tell());
    ASSERT_TRUE(support::waitUntil([&] { return answers.size() == 3; }));
    EXPECT_EQ(answers[2], Newer());
    EXPECT_TRUE(log.contains("The plug-in refused the settings: "));
}

TEST_F(PluginBusClientTest, AsksWhereThePluginLeavesItsCrashReports) {
    PluginBusClient client(record());
    QStringList folders;
    const auto ask = [&] { client.askCrashFolder([&](const auto& one) { folders += one; }); };
    ask(); // nobody is there
    Peer plugin(*bus);
    Taker taker;
    plugin.serve(taker);
    plugin.own();
    ASSERT_TRUE(support::waitUntil([&] { return comings_ == 1; }));
    ask();
    EXPECT_TRUE(support::waitUntil([&] { return folders == QStringList{"/crashes"}; }));
}

#include "PluginBusClientTest.moc"
