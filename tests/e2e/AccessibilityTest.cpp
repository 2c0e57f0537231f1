#include "e2e/DesktopFixture.h"

#include "support/AccessibleObject.h"
#include "support/ScopedVariable.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QObject>

#include <csignal>

using support::AccessibleObject;
using support::waitUntil;

// What assistive tools, which are other programs, see of the window and do in it.
namespace {

constexpr unsigned checked = 4;
constexpr unsigned focusable = 11;
constexpr unsigned showing = 25;

/// The announcements that have arrived.
class Listener : public QObject {
    Q_OBJECT

  public:
    explicit Listener(const support::AssistiveTool& tool) {
        tool.listen("object:state-changed:checked");
        tool.listen("object:property-change:accessible-value");
        for (const char* const kind : {"StateChanged", "PropertyChange"})
            tool.bus().connect({}, {}, "org.a11y.atspi.Event.Object", QLatin1String(kind), this,
                               SLOT(take(QDBusMessage)));
    }

    QStringList events;

  private Q_SLOTS:
    void take(const QDBusMessage& signal) {
        const QString what = signal.arguments().value(0).toString();
        if (what == "checked" || what == "accessible-value")
            events += what;
    }
};

class AccessibilityTest : public DesktopFixture {
  protected:
    void SetUp() override {
        startTonvale();
        connectPlayer();
        other_.emplace(MVCommMainSocketPath());
        other_->checkIn(1, "coreaudiod");
        EXPECT_TRUE(waitUntil([&] {
            item_ = tool_.desktop().find("list item", "player");
            return item_ && tool_.desktop().find("list item", "Sound Effects");
        })) << tonvale_->output();
    }

    AccessibleObject slider() const { return item_->find("slider", "Volume").value(); }
    AccessibleObject mute() const { return item_->find("check box", "Mute").value(); }

    support::AssistiveTool tool_{session_};
    std::optional<support::ScriptedPlugin> other_;
    std::optional<AccessibleObject> item_;
};

/// The bar that tells why nothing can be set, of an application that no plug-in connects to.
class ProblemBarTest : public DesktopFixture {
  protected:
    void TearDown() override {
        const QDBusReply<uint> plugin = bus_->interface()->servicePid(pluginName);
        if (plugin.isValid())
            ::kill(static_cast<pid_t>(plugin.value()), SIGKILL); // it does not end with its parent
        DesktopFixture::TearDown();
    }

    /// The bar as soon as it is seen.
    std::optional<AccessibleObject> bar(const QString& text) {
        std::optional<AccessibleObject> found;
        EXPECT_TRUE(waitUntil([&] {
            found = tool_.desktop().find("alert message", text);
            return found && found->hasState(showing);
        })) << tool_.outline().toStdString();
        return found;
    }

    static void press(const AccessibleObject& bar, const QString& name) {
        auto button = bar.find("button", name);
        if (!button)
            button = bar.find("push button", name);
        ASSERT_TRUE(button) << name.toStdString();
        EXPECT_TRUE(button->hasState(focusable));
        button->act("Press");
    }

    static inline const QString pluginName = "com.quarnel.Tonvale.Plugin";
    support::AssistiveTool tool_{session_};
    support::BusConnection bus_{session_.address()};
};

} // namespace

TEST_F(ProblemBarTest, ThePluginIsStartedFromThereAndOutlivesTheApplication) {
    startTonvale();
    const QString text =
        "The audio plug-in isn't running. Your changes are saved and take effect when it starts.";
    const auto absent = bar(text);
    ASSERT_TRUE(absent);
    press(*absent, "Start Plug-in");
    const auto isThere = [&] { return bus_->interface()->isServiceRegistered(pluginName).value(); };
    ASSERT_TRUE(waitUntil(isThere)) << tonvale_->output();
    EXPECT_TRUE(waitUntil([&] { return !absent->hasState(showing); }));
    quitTonvale();
    EXPECT_TRUE(isThere());
}

TEST_F(ProblemBarTest, ASocketThatCannotBeServedIsTriedAgainFromThere) {
    const std::filesystem::path folder =
        std::filesystem::path(std::getenv("TMPDIR")) / "not yet there";
    const support::ScopedVariable place("TONVALE_SOCKET_DIR", folder);
    tonvale_.emplace(std::vector<std::string>{TONVALE_PROGRAM});
    const auto failed = bar("Volumes can't be set: the audio plug-in can't connect to Tonvale.");
    ASSERT_TRUE(failed);
    press(*failed, "Details…");
    EXPECT_TRUE(waitUntil([&] {
        return tool_.outline().contains("not yet there/com.quarnel.mivo.sock") &&
               tool_.outline().contains("No such file or directory");
    })) << tool_.outline().toStdString();
    std::filesystem::create_directories(folder);
    press(*failed, "Try Again");
    EXPECT_TRUE(
        waitUntil([] { return bool(platform::connectUnixSocket(MVCommMainSocketPath())); }));
    EXPECT_TRUE(waitUntil([&] { return !failed->hasState(showing); }));
}

TEST_F(AccessibilityTest, TheWindowHoldsAListOfItemsInTheirOrder) {
    const auto window = tool_.window("Tonvale");
    ASSERT_TRUE(window) << tool_.outline().toStdString();
    const auto list = window->find("list", "Programs");
    ASSERT_TRUE(list);
    QStringList names;
    for (const AccessibleObject& item : list->children()) {
        EXPECT_EQ(item.role(), "list item");
        names += item.name();
    }
    EXPECT_EQ(names, (QStringList{"Sound Effects", "player"}));
    EXPECT_TRUE(window->find("button", "Menu") || window->find("push button", "Menu"));
    EXPECT_EQ(item_->children().size(), 3) << "name, mute, slider";
    EXPECT_TRUE(item_->description().startsWith("100 %\n/usr/bin/x"))
        << "the state, the path, and why it is so called";
}

TEST_F(AccessibilityTest, WhatIsChangedThereReachesTheWire) {
    EXPECT_TRUE(slider().hasState(focusable));
    EXPECT_EQ(slider().value("MinimumValue"), 0.0);
    EXPECT_EQ(slider().value("MaximumValue"), 1.0);
    EXPECT_EQ(slider().value(), 1.0);
    slider().setValue(0.5);
    sentUntil("9,4711,50 ");
    EXPECT_EQ(slider().value(), 0.5);
    ASSERT_EQ(slider().actions().mid(0, 2), (QStringList{"Increase", "Decrease"}));
    slider().act("Increase");
    sentUntil("9,4711,60 ");
    slider().act("Decrease");
    sentUntil("9,4711,50 ");
    EXPECT_FALSE(mute().hasState(checked));
    ASSERT_TRUE(mute().actions().contains("Press"));
    mute().act("Press");
    sentUntil("10,4711,1 ");
    EXPECT_TRUE(mute().hasState(checked));
}

TEST_F(AccessibilityTest, TheStateAndThePercentAreTexts) {
    slider().setValue(0.5);
    EXPECT_EQ(slider().text(), "50 %");
    const auto state = [&] { return item_->description().section('\n', 0, 0); };
    EXPECT_EQ(state(), "50 %");
    mute().act("Press");
    EXPECT_EQ(state(), "50 %, muted");
    EXPECT_TRUE(waitUntil([&] { // levels soon count as old
        plugin_->reportLevel(4711, 0.5F);
        return state() == "50 %, playing, muted";
    })) << state().toStdString();
    EXPECT_TRUE(waitUntil([&] { return state() == "50 %, muted"; }));
}

TEST_F(AccessibilityTest, OnlyTheUsersChangesAreAnnounced) {
    Listener listener(tool_);
    plugin_->reportLevel(4711, 0.5F);
    QDBusMessage report = QDBusMessage::createSignal(
        "/com/quarnel/Tonvale/Plugin", "com.quarnel.Tonvale.Plugin", "ChangedElsewhere");
    report.setArguments({4711U, 42, true});
    auto session =
        QDBusConnection::connectToBus(QString::fromStdString(session_.address()), "plug-in");
    ASSERT_TRUE(session.registerService("com.quarnel.Tonvale.Plugin"));
    session.send(report);
    EXPECT_TRUE(waitUntil([&] { return mute().hasState(checked); }));
    EXPECT_NEAR(slider().value(), 0.42, 1e-6);
    EXPECT_EQ(listener.events, QStringList());
    slider().setValue(0.25);
    mute().act("Press");
    EXPECT_TRUE(waitUntil([&] { return listener.events.size() >= 2; }));
    EXPECT_EQ(listener.events, (QStringList{"accessible-value", "checked"}));
    QDBusConnection::disconnectFromBus("plug-in");
}

#include "AccessibilityTest.moc"
