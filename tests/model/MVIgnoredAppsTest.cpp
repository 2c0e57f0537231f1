#include "model/MVIgnoredApps.h"

#include "model/MVIgnoredApp.h"
#include "platform/bus/NotificationCenter.h"
#include "platform/defaults/UserDefaults.h"
#include "settings/IgnoredNames.h"
#include "support/PrivateFolder.h"
#include "support/SystemLogRecorder.h"

#include <gtest/gtest.h>

#include <QCryptographicHash>

#include <algorithm>
#include <string>
#include <vector>

using platform::UserDefaults;

namespace {

constexpr const char* disabledKey = "DisabledBuiltInIgnoredApps";
constexpr const char* customKey = "CustomIgnoredApps";

class MVIgnoredAppsTest : public testing::Test {
  public:
    ~MVIgnoredAppsTest() override { MVIgnoredApps::setPluginNotifier(nullptr); }

  protected:
    MVIgnoredAppsTest() {
        MVIgnoredApps::setPluginNotifier([this] { steps_ += 'P'; });
    }

    static MVIgnoredApp& entry(const MVIgnoredApps& apps, const QString& name) {
        const auto found = std::ranges::find_if(
            apps.builtIn(), [&](const auto& each) { return each->name() == name; });
        return **found;
    }

    /// What `change` brings about: N the notification, P the plug-ins are told.
    std::string stepsOf(const std::function<void()>& change) {
        steps_.clear();
        change();
        return steps_;
    }

    support::SystemLogRecorder log_;
    UserDefaults defaults_{""}; // in memory
    std::string steps_;
    const platform::NotificationObserver observer_{"MVIgnoredAppsDidChangeNotification",
                                                   [this](const QVariant& object) {
                                                       EXPECT_FALSE(object.isValid());
                                                       steps_ += 'N';
                                                   }};
};

} // namespace

TEST_F(MVIgnoredAppsTest, TheBuiltInNamesAreSortedWithoutRegardToCase) {
    const MVIgnoredApps apps(defaults_);
    QStringList names;
    for (const auto& each : apps.builtIn()) {
        names += each->name();
        EXPECT_TRUE(each->enabled());
    }
    EXPECT_EQ(names.size(), 43);
    QStringList sorted = names;
    sorted.sort(Qt::CaseInsensitive);
    EXPECT_EQ(names, sorted);
    sorted.sort();
    EXPECT_EQ(
        QCryptographicHash::hash(sorted.join('\n').toUtf8(), QCryptographicHash::Sha256).toHex(),
        "45a167f5608b3e007103e5edd647032a3de9e5b7a9ec0425a301e380e664b88b")
        << "a name has come, gone or changed";
    EXPECT_TRUE(apps.custom().isEmpty());
    EXPECT_EQ(steps_, "") << "nothing has changed";
}

TEST_F(MVIgnoredAppsTest, MatchesWholeNamesInAnyCase) {
    MVIgnoredApps apps(defaults_);
    apps.addCustomIgnore("ÄRGER straße");
    apps.addCustomIgnore("iris");
    apps.addCustomIgnore("ΟΔΟΣ");
    const IgnoredNames plain{{"ÄRGER straße", "iris", "ΟΔΟΣ"}, {}}; // as plug-ins see it
    for (const char* const name :
         {"Finder", "finder", "FINDER", "ärger STRAßE", "IRIS", "οδος", "mdworker"}) {
        EXPECT_TRUE(apps.isAppIgnored(name)) << name;
        EXPECT_TRUE(plain.contains(name)) << name;
    }
    for (const char* const name : {"Finder Helper", "Find", "/usr/bin/Finder", " Finder", "",
                                   "ärger STRASSE", "ırıs", "İris", "mdworker3"}) {
        EXPECT_FALSE(apps.isAppIgnored(name)) << name;
        EXPECT_FALSE(plain.contains(name)) << name;
    }
    entry(apps, "Finder").setEnabled(false);
    EXPECT_FALSE(apps.isAppIgnored("Finder"));
    apps.addCustomIgnore("finder");
    EXPECT_TRUE(apps.isAppIgnored("Finder"));
}

TEST_F(MVIgnoredAppsTest, EveryChangeIsStoredAndAnnouncedAndSomeNotifyThePlugins) {
    MVIgnoredApps apps(defaults_);
    MVIgnoredApp& finder = entry(apps, "Finder");
    MVIgnoredApp& dock = entry(apps, "Dock");
    EXPECT_EQ(stepsOf([&] { finder.setEnabled(false); }), "NP");
    EXPECT_EQ(stepsOf([&] { finder.setEnabled(false); }), "") << "no change";
    EXPECT_EQ(defaults_.list(disabledKey), QVariantList{"Finder"});
    EXPECT_EQ(stepsOf([&] { dock.setEnabled(false); }), "NP");
    EXPECT_EQ(defaults_.list(disabledKey), (QVariantList{"Dock", "Finder"})) << "as they stand";
    EXPECT_EQ(stepsOf([&] { finder.setEnabled(true); }), "N");
    EXPECT_EQ(stepsOf([&] { dock.setEnabled(true); }), "N");
    EXPECT_FALSE(defaults_.value(disabledKey).isValid());

    EXPECT_EQ(stepsOf([&] { apps.addCustomIgnore("zeta"); }), "NP");
    EXPECT_EQ(stepsOf([&] { apps.addCustomIgnore("Alpha"); }), "NP");
    EXPECT_EQ(stepsOf([&] { apps.addCustomIgnore("zeta"); }), "NP");
    EXPECT_EQ(apps.custom(), (QStringList{"Alpha", "zeta", "zeta"}));
    EXPECT_EQ(defaults_.list(customKey), (QVariantList{"Alpha", "zeta", "zeta"}));
    EXPECT_EQ(stepsOf([&] { apps.removeCustomIgnore("ZETA"); }), "N");
    EXPECT_EQ(apps.custom().size(), 3) << "removal is exact";
    EXPECT_EQ(stepsOf([&] { apps.removeCustomIgnore(apps.custom().last()); }), "N");
    EXPECT_EQ(apps.custom(), QStringList{"Alpha"});
    apps.removeCustomIgnore("Alpha");
    EXPECT_FALSE(defaults_.value(customKey).isValid());
}

TEST_F(MVIgnoredAppsTest, TakesOverWhatIsStoredAndDropsWhatItDoesNotKnow) {
    const struct {
        const char* what;
        QVariant disabled;
        QVariant custom;
        QStringList expectedCustom;
        bool isFinderIgnored;
        QVariantList disabledAfterSaving;
    } cases[] = {
        {"nothing", {}, {}, {}, true, {}},
        {"names", QVariantList{"Finder"}, QVariantList{"b", "A"}, {"b", "A"}, false, {"Finder"}},
        {"other case", QVariantList{"finder"}, {}, {}, true, {}},
        {"unknown names", QVariantList{"Gone", "Finder"}, {}, {}, false, {"Finder"}},
        {"text", "Finder", "Player", {}, true, {}},
        {"dictionary", QVariantMap{{"Finder", true}}, QVariantMap{{"a", "b"}}, {}, true, {}},
        {"mixed arrays",
         QVariantList{1, QVariantList{"Dock"}, "Finder"},
         QVariantList{true, "", QByteArray("x"), "Player"},
         {"", "Player"},
         false,
         {"Finder"}},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        UserDefaults defaults("");
        defaults.set(disabledKey, each.disabled);
        defaults.set(customKey, each.custom);
        MVIgnoredApps apps(defaults);
        EXPECT_EQ(apps.custom(), each.expectedCustom) << "not sorted until something is added";
        EXPECT_EQ(apps.isAppIgnored("Finder"), each.isFinderIgnored);
        apps.save(false);
        EXPECT_EQ(defaults.list(disabledKey), each.disabledAfterSaving);
        EXPECT_EQ(defaults.list(customKey).size(), each.expectedCustom.size());
    }
}

TEST_F(MVIgnoredAppsTest, TheListOutlivesTheProcess) {
    const support::PrivateFolder folder;
    const auto path = folder.path() / "preferences.plist";
    {
        UserDefaults defaults(path);
        MVIgnoredApps apps(defaults);
        entry(apps, "iCal").setEnabled(false);
        apps.addCustomIgnore("Größe & <b>\n\u202e🎵");
        apps.addCustomIgnore("what XML\x01 can't hold");
        EXPECT_TRUE(apps.isAppIgnored("What XML\x01 can't hold"));
    }
    UserDefaults defaults(path);
    MVIgnoredApps apps(defaults);
    EXPECT_FALSE(apps.isAppIgnored("iCal"));
    EXPECT_TRUE(apps.isAppIgnored("GRÖßE & <B>\n\u202e🎵"));
    EXPECT_TRUE(apps.isAppIgnored("what XML\x01 can't hold"));
    EXPECT_FALSE(apps.isAppIgnored("what XML can't hold"));
    apps.removeCustomIgnore("what XML\x01 can't hold");
    EXPECT_EQ(apps.custom().size(), 1);
}

TEST_F(MVIgnoredAppsTest, LogsEachChangeInOneHarmlessLine) {
    MVIgnoredApps apps(defaults_);
    log_.clear();
    apps.addCustomIgnore("a\nb\u202e");
    apps.removeCustomIgnore("a\nb\u202e");
    entry(apps, "Dock").setEnabled(false);
    entry(apps, "Dock").setEnabled(true);
    std::vector<std::string> texts;
    for (const auto& line : log_.lines())
        texts.push_back(line.text);
    EXPECT_EQ(texts, (std::vector<std::string>{
                         "Added custom 'a\\nb\\u202e'", "Removed custom 'a\\nb\\u202e'",
                         "Disabled built-in 'Dock'", "Enabled built-in 'Dock'"}));
}
