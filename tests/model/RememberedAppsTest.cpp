#include "AppVolumeFixture.h"

#include "model/MVCommAppValue.h"
#include "model/SeenApps.h"

namespace {

constexpr std::uint32_t pid = 4711;

class RememberedAppsTest : public AppVolumeFixture {
  protected:
    RememberedApps& remembered_ = controller_.rememberedApps();
};

} // namespace

TEST_F(RememberedAppsTest, WhatAnotherMixerHasSetIsMoreThanTheVolumeOfNewOnes) {
    remembered_.setDefaultVolume(30);
    controller_.changedElsewhere(pid, {60, true}); // it has been heard before we came
    const MVCommAppValue& app = connected(pid, "player");
    EXPECT_EQ(controller_.percentOf(app), 60);
    EXPECT_EQ(sent(), "");
    EXPECT_EQ(stored()["player"].toMap()["Volume"], 60);
}

TEST_F(RememberedAppsTest, AProgramWithANewNameTakesOverTheSettingsOfItsFileName) {
    remembered_.setDefaultVolume(30);
    remembered_.set("pacat", {40, true});
    remembered_.set("python3.11", {50, false});
    plugin_.checkIn(pid, "paplay", "/usr/bin/pacat");
    ASSERT_TRUE(support::waitUntil([&] { return find("paplay") != nullptr; }));
    EXPECT_EQ(controller_.percentOf(*find("paplay")), 40);
    EXPECT_TRUE(find("paplay")->muted());
    EXPECT_EQ(sent(), "9,4711,0,40 10,4711,0,1 ");
    EXPECT_EQ(stored()["paplay"], stored()["pacat"]) << "which another program may still have";

    support::ScriptedPlugin other(MVCommMainSocketPath());
    other.checkIn(pid + 1, "synth", "/usr/bin/python3.11");
    ASSERT_TRUE(support::waitUntil([&] { return find("synth") != nullptr; }));
    EXPECT_EQ(controller_.percentOf(*find("synth")), 30) << "its file has many names";

    remembered_.set("paplay", {100, false});
    plugin_.checkIn(pid + 2, "paplay", "/usr/bin/pacat");
    ASSERT_TRUE(support::waitUntil([&] { return find("paplay")->pid() == pid + 2; }));
    EXPECT_EQ(controller_.percentOf(*find("paplay")), 100) << "that is its own by now";
}

TEST_F(RememberedAppsTest, AnIgnoredProgramIsNewWhenThatEnds) {
    remembered_.setDefaultVolume(30);
    model_.ignoredApps.addCustomIgnore("player");
    support::ScriptedPlugin other(MVCommMainSocketPath());
    plugin_.checkIn(pid, "player");
    connected(other, pid + 1, "other");
    EXPECT_EQ(stored().keys(), QStringList{"other"});
    model_.ignoredApps.removeCustomIgnore("player");
    ASSERT_NE(find("player"), nullptr);
    EXPECT_EQ(controller_.percentOf(*find("player")), 30);
    controller_.update();
    EXPECT_EQ(remembered_.all().size(), 2);
}

TEST_F(RememberedAppsTest, TheItemOfAProgramFollowsWhatIsSetByItsName) {
    MVCommAppValue& app = connected(pid, "player");
    int calls = 0;
    controller_.setObserver([&] { ++calls; });
    view_.told.clear();
    remembered_.set("player", {40, true});
    EXPECT_EQ(controller_.percentOf(app), 40);
    EXPECT_TRUE(app.muted());
    EXPECT_FALSE(view_.told.isEmpty());
    EXPECT_GT(calls, 0);
    EXPECT_EQ(sent(), "9,4711,0,40 10,4711,0,1 ");
}

TEST_F(RememberedAppsTest, TheListOfSeenOnesHasAnEndAndSurvivesNonsense) {
    platform::UserDefaults defaults{{}};
    defaults.set("SeenApps", QVariantList{"a", 3, "a", "b\x01"});
    SeenApps seen(defaults);
    EXPECT_EQ(seen.names(), QStringList({"a", "b\uFFFD"}));
    EXPECT_TRUE(seen.contains("b\x01")) << "as a property list has it";
    EXPECT_FALSE(seen.add({"a"}));
    for (int i = 0; i < 2000; ++i)
        EXPECT_TRUE(seen.add({QString::number(i)}));
    EXPECT_EQ(seen.names().size(), 2000);
    EXPECT_FALSE(seen.contains("a")) << "the oldest goes";
    EXPECT_TRUE(seen.contains("0"));
    EXPECT_EQ(defaults.list("SeenApps").size(), 2000);
}
