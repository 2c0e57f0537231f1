#include "helper/Helper.h"

#include "helper/TrayScene.h"
#include "platform/bus/SessionBus.h"
#include "platform/bus/SingleInstance.h"
#include "support/SystemLogRecorder.h"

#include <gtest/gtest.h>

#include <QDBusReply>

using support::waitUntil;

namespace {

constexpr const char* item = "org.kde.StatusNotifierItem";
constexpr const char* menu = "com.canonical.dbusmenu";

QString linesOf(const MenuLayoutItem& entry, const QString& indent = {}) {
    QString text;
    for (const QDBusVariant& child : entry.children) {
        const auto each = qdbus_cast<MenuLayoutItem>(child.variant());
        const QVariantMap& properties = each.properties;
        QString line =
            properties.value("type") == "separator" ? "-" : properties["label"].toString();
        if (properties.contains("toggle-state"))
            line = (properties["toggle-state"] == 1 ? "[x] " : "[ ] ") + line;
        if (properties.value("enabled", true) == false)
            line = "(" + line + ")";
        text += indent + line + "\n" + linesOf(each, indent + "  ");
    }
    return text;
}

int idOf(const MenuLayoutItem& entry, const QStringList& labels) {
    if (labels.isEmpty())
        return entry.id;
    for (const QDBusVariant& child : entry.children) {
        const auto each = qdbus_cast<MenuLayoutItem>(child.variant());
        if (each.properties["label"].toString().startsWith(labels[0]))
            return idOf(each, labels.mid(1));
    }
    return -1;
}

/// The helper on a bus with a host, which is the test.
class HelperTest : public testing::Test {
  protected:
    HelperTest() {
        trayBus();
        instance_ = platform::SingleInstance::acquire("com.quarnel.TonvaleHelper");
        helper_.emplace(
            platform::sessionBus(), *instance_,
            Helper::Surroundings{.volumeTool = tool_.path(),
                                 .iconPreference = folder_.path() / "UseColorMenuBarIcon",
                                 .findApplication = [this] { return application_; },
                                 .quit = [this] { ++ends_; }});
        EXPECT_TRUE(waitUntil([&] { return !watcher_.items.isEmpty() && title() != "Tonvale"; }));
    }

    QDBusMessage call(const QString& interface, const QString& method,
                      const QVariantList& arguments = {}) {
        const QString path = interface == menu ? "/MenuBar" : "/StatusNotifierItem";
        return ask(*host_, watcher_.items.value(0), path, interface, method, arguments);
    }

    QVariantMap look() {
        const QDBusReply<QVariantMap> reply =
            call("org.freedesktop.DBus.Properties", "GetAll", {item});
        return reply.value();
    }

    QString title() { return watcher_.items.isEmpty() ? "Tonvale" : look()["Title"].toString(); }

    MenuLayoutItem layout() {
        const QDBusMessage reply = call(menu, "GetLayout", {0, -1, QStringList()});
        return reply.arguments().size() == 2 ? qdbus_cast<MenuLayoutItem>(reply.arguments()[1])
                                             : MenuLayoutItem();
    }

    QString lines() { return linesOf(layout()); }

    void choose(const QStringList& labels) {
        call(menu, "Event",
             {idOf(layout(), labels), "clicked", QVariant::fromValue(QDBusVariant(0)), 0U});
    }

    const support::PrivateFolder folder_;
    const support::SystemLogRecorder log_;
    FakeVolumeTool tool_;
    ScriptedWatcher watcher_{true};
    support::BusConnection host_{trayBus().address()};
    std::optional<std::filesystem::path> application_;
    int ends_ = 0;
    std::unique_ptr<platform::SingleInstance> instance_;
    std::optional<Helper> helper_;
};

ObjectTree somePrograms() {
    using Application = ScriptedApplication;
    return {
        {QDBusObjectPath(Application::pathOf("b")), Application::program("my_player", 50, true)},
        {QDBusObjectPath(Application::pathOf("a")), Application::program("Zebra\n", 30, true)},
        {QDBusObjectPath(Application::pathOf("c")), Application::program("silent", 20, false)},
        {QDBusObjectPath(Application::pathOf("d")),
         Application::program("raw", 100, true, "It has no volume")}};
}

} // namespace

TEST_F(HelperTest, TellsVolumeAndMuteByTitleTipAndIcon) {
    EXPECT_EQ(title(), "Tonvale: Volume 40 %");
    EXPECT_EQ(look()["IconName"], "com.quarnel.Tonvale-symbolic");
    EXPECT_EQ(look()["Status"], "Active");
    EXPECT_EQ(qdbus_cast<TrayToolTip>(look()["ToolTip"]).title, title());
    tool_.say("Volume: 0.40 [MUTED]");
    call(item, "SecondaryActivate", {1, 1});
    EXPECT_TRUE(waitUntil([&] { return title() == "Tonvale: Volume 40 %, muted"; }));
    EXPECT_NE(tool_.calls().find("set-mute"), std::string::npos);
    EXPECT_EQ(look()["IconName"], "com.quarnel.Tonvale-muted-symbolic");
    EXPECT_EQ(call(item, "XAyatanaSecondaryActivate", {0U}).type(), QDBusMessage::ErrorMessage)
        << "or hosts that try it first would toggle twice";

    std::ofstream(folder_.path() / "UseColorMenuBarIcon") << "1";
    host_.say("/com/quarnel/Tonvale", "com.quarnel.Tonvale", "HelperUpdateMenuBarIcon");
    EXPECT_TRUE(waitUntil([&] { return look()["IconName"] == "com.quarnel.Tonvale-muted"; }));

    tool_.say("Volume: 0.75"); // elsewhere
    call(menu, "AboutToShow", {0});
    EXPECT_TRUE(waitUntil([&] { return lines().startsWith("(Volume 75 %)\n"); }));
}

TEST_F(HelperTest, TurnsTheVolumeInEitherDialect) {
    for (const auto& [delta, change] :
         {std::pair(120, " 5%+\n"), {-1, " 5%+\n"}, {-240, " 10%-\n"}, {3, " 15%-\n"}}) {
        const std::size_t before = tool_.calls().size();
        call(item, "Scroll", {delta, "vertical"});
        EXPECT_TRUE(waitUntil([&, &change = change] {
            return tool_.calls().find(change, before) != std::string::npos;
        })) << delta;
    }
    const std::string before = tool_.calls();
    call(item, "Scroll", {120, "horizontal"});
    call(item, "SecondaryActivate", {0, 0});
    EXPECT_TRUE(waitUntil([&] { return tool_.calls().find("set-mute") != std::string::npos; }));
    EXPECT_EQ(tool_.calls().find("set-volume", before.size()), std::string::npos);
}

TEST_F(HelperTest, ItsMenuShowsAndSetsWhatPlays) {
    EXPECT_EQ(lines(), "(Volume 40 %)\n[ ] Mute the output\n-\n(Tonvale is not running)\n-\n"
                       "Open Tonvale\nPreferences…\nQuit Tonvale\n");
    ScriptedApplication application(somePrograms());
    EXPECT_TRUE(waitUntil([&] { return lines().contains("my__player"); }));
    EXPECT_EQ(lines(), "(Volume 40 %)\n[ ] Mute the output\n-\n"
                       "my__player (50 %)\n  [ ] Mute\n  -\n  [ ] 100 %\n  [ ] 75 %\n  [x] 50 %\n"
                       "  [ ] 25 %\n  [ ] 10 %\n"
                       "raw (100 %)\n  ([ ] Mute)\n  -\n  ([x] 100 %)\n  ([ ] 75 %)\n  ([ ] 50 %)\n"
                       "  ([ ] 25 %)\n  ([ ] 10 %)\n  (It has no volume)\n"
                       "Zebra  (30 %)\n  [ ] Mute\n  -\n  [ ] 100 %\n  [ ] 75 %\n  [ ] 50 %\n"
                       "  [ ] 25 %\n  [ ] 10 %\n"
                       "Mute everything that plays\n-\nOpen Tonvale\nPreferences…\nQuit Tonvale\n");
    choose({"my__player", "25 %"});
    choose({"Zebra", "Mute"});
    choose({"raw", "Mute"});
    application.change("a", {{"Muted", true}});
    EXPECT_TRUE(waitUntil([&] { return lines().contains("Zebra  (muted)\n  [x] Mute"); }));
    choose({"Mute everything"});
    choose({"Zebra", "Mute"});
    EXPECT_TRUE(waitUntil([&] { return application.calls.size() == 4; }));
    EXPECT_EQ(application.calls, (QStringList{"b Volume 25", "a Muted true",
                                              "ActivateAction mute-all ", "a Muted false"}));
    application.remove("a");
    application.change("b", {{"Playing", false}});
    application.change("d", {{"Playing", false}});
    EXPECT_TRUE(waitUntil([&] { return lines().contains("(No program plays)"); }));
    application.add("e", ScriptedApplication::program("new", 10, true));
    EXPECT_TRUE(waitUntil([&] { return lines().contains("new (10 %)"); }));
}

TEST_F(HelperTest, OpensAndQuitsTheApplication) {
    ScriptedApplication application;
    EXPECT_TRUE(waitUntil([&] { return lines().contains("No program plays"); }));
    call(item, "ProvideXdgActivationToken", {"token"});
    call(item, "Activate", {1, 1});
    call(item, "Activate", {1, 1});
    choose({"Open"});
    call(item, "ProvideXdgActivationToken", {"other"});
    choose({"Preferences"});
    choose({"Quit"});
    EXPECT_TRUE(waitUntil([&] { return application.calls.size() == 5; }));
    EXPECT_EQ(application.calls, (QStringList{"ToggleWindow token", "ToggleWindow ", "Activate ",
                                              "ActivateAction preferences other", "Quit"}));
    EXPECT_EQ(ends_, 1);
}

TEST_F(HelperTest, ThePreferencesOpenAfterAStartUnlessItFails) {
    application_ = folder_.path() / "none";
    choose({"Preferences"});
    EXPECT_TRUE(waitUntil([&] { return log_.contains("Couldn't start"); }));
    {
        ScriptedApplication application;
        EXPECT_TRUE(waitUntil([&] { return lines().contains("No program plays"); }));
        EXPECT_EQ(application.calls, QStringList());
    }
    EXPECT_TRUE(waitUntil([&] { return lines().contains("Tonvale is not running"); }));
    application_ = "/bin/true";
    choose({"Preferences"});
    ScriptedApplication application;
    EXPECT_TRUE(waitUntil([&] { return !application.calls.isEmpty(); }));
    EXPECT_EQ(application.calls, QStringList{"ActivateAction preferences "});
}

TEST_F(HelperTest, StartsTheApplicationOrEndsWhenItIsGone) {
    const auto program = folder_.path() / "Tonvale";
    std::ofstream(program) << "#!/bin/sh\necho \"$XDG_ACTIVATION_TOKEN\" >'"
                           << folder_.path().string() << "/started'\n";
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    application_ = program;
    call(item, "ProvideXdgActivationToken", {"token"});
    call(item, "Activate", {1, 1});
    EXPECT_TRUE(
        waitUntil([&] { return support::contentOf(folder_.path() / "started") == "token\n"; }));
    EXPECT_EQ(ends_, 0);
    application_.reset();
    choose({"Open"});
    EXPECT_EQ(ends_, 1);
    EXPECT_TRUE(log_.contains("not there any more"));
}
