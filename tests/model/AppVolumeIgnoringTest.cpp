#include "AppVolumeFixture.h"
#include "support/PrivateFolder.h"

#include <filesystem>
#include <future>
#include <utility>

using support::ScriptedPlugin;
using support::waitUntil;

namespace {

/// With preferences in a file, one folder for a copy, and a gate before the copying.
class AppVolumeIgnoringTest : public AppVolumeFixture {
  public:
    ~AppVolumeIgnoringTest() override { open(); }
    AppVolumeIgnoringTest(const AppVolumeIgnoringTest&) = delete;
    AppVolumeIgnoringTest& operator=(const AppVolumeIgnoringTest&) = delete;

  protected:
    AppVolumeIgnoringTest() { controller_.setView(nullptr); }

    void open() {
        if (!std::exchange(isOpen_, true))
            gate_.set_value();
    }

    /// Has the plug-in's program known here, as a change of the connections does.
    void checkIn(ScriptedPlugin& plugin, std::uint32_t pid, const char* name,
                 const char* path = "/usr/bin/x") {
        const auto before = MVCommCopyConnectedProcesses(model_.comm).size();
        plugin.checkIn(pid, name, path);
        EXPECT_TRUE(waitUntil(
            [&] { return MVCommCopyConnectedProcesses(model_.comm).size() == before + 1; }));
        ignoring_.update();
    }

    bool isToldOfTheList() {
        return waitUntil([&] {
            const auto commands = plugin_.takeCommands();
            return !commands.empty() && commands[0].type == kMVCommIgnoreListChanged;
        });
    }

    const support::PrivateFolder folder_;
    const std::filesystem::path copies_ = folder_.path();
    const std::filesystem::path file_ = folder_.path() / "own/p.plist";
    platform::UserDefaults defaults_{file_};
    MVIgnoredApps ignored_{defaults_};
    std::promise<void> gate_;
    bool isOpen_ = false;
    AppVolumeController ignoring_{{model_.comm, ignored_, model_.workspace, defaults_, file_,
                                   [this, passed = std::shared_future(gate_.get_future())] {
                                       passed.wait();
                                       return std::vector<std::string>{copies_};
                                   }}};
};

} // namespace

TEST_F(AppVolumeIgnoringTest,
       PluginsAreNotifiedWhenTheCopiesAreInPlaceAndTheMainThreadDoesNotWait) {
    checkIn(plugin_, 1, "player");
    ignored_.addCustomIgnore("PLAYER");
    EXPECT_TRUE(ignoring_.apps().isEmpty()) << "at once";
    EXPECT_EQ(sent(), "") << "it was at full volume, and nothing is copied yet";
    open();
    EXPECT_TRUE(isToldOfTheList());
    const platform::UserDefaults copy(copies_ / "p.plist");
    EXPECT_EQ(copy.list("CustomIgnoredApps"), QVariantList{"PLAYER"});
}

TEST_F(AppVolumeIgnoringTest, ANameThatIsIgnoredNoLongerIsInNoCopyEither) {
    open();
    const auto namesInCopy = [&] {
        return platform::UserDefaults(copies_ / "p.plist").list("CustomIgnoredApps");
    };
    ignored_.addCustomIgnore("player");
    ASSERT_TRUE(waitUntil([&] { return namesInCopy() == QVariantList{"player"}; }));
    ignored_.removeCustomIgnore("player");
    EXPECT_TRUE(waitUntil([&] { return namesInCopy().isEmpty(); }));
}

TEST_F(AppVolumeIgnoringTest, PluginsAreNotifiedEvenIfCopyingFails) {
    std::filesystem::create_directories(copies_ / "p.plist/precious");
    open();
    checkIn(plugin_, 1, "player");
    ignored_.addCustomIgnore("other");
    EXPECT_TRUE(isToldOfTheList());
}

TEST_F(AppVolumeIgnoringTest, AnIgnoredProgramIsFreedOnceAndLeftAloneUntilItIsNotIgnoredAnyMore) {
    ScriptedPlugin first(MVCommMainSocketPath());
    ScriptedPlugin second(MVCommMainSocketPath());
    checkIn(first, 1, "player");
    checkIn(second, 2, "player");
    ignoring_.setPercent(*ignoring_.apps()[0], 40);
    ignoring_.setMuted(*ignoring_.apps()[0], true);
    EXPECT_EQ(sentTo(first), "9,1,0,40 10,1,0,1 ");
    sentTo(second);

    ignored_.addCustomIgnore("player");
    EXPECT_EQ(sentTo(first), "9,1,0,100 10,1,0,0 9,2,0,100 10,2,0,0 ");
    ignored_.addCustomIgnore("other");
    ignoring_.changedElsewhere(1, {70, false});
    ignoring_.update();
    EXPECT_EQ(sentTo(first), "");
    ignored_.removeCustomIgnore("player");
    ASSERT_EQ(ignoring_.apps().size(), 1);
    EXPECT_EQ(sentTo(first), "") << "the plug-in reads what is remembered";
    EXPECT_EQ(ignoring_.percentOf(*ignoring_.apps()[0]), 40) << "no report has touched that";
}

TEST_F(AppVolumeIgnoringTest, AProgramThatIsIgnoredWhileThePluginIsAwayIsFreedWhenThatComes) {
    model_.workspace.setRunningApplications({{1, "player", {}}, {2, "other", {}}});
    ASSERT_EQ(ignoring_.apps().size(), 2);
    for (MVCommAppValue* const app : ignoring_.apps())
        ignoring_.setPercent(*app, 40);
    for (const char* const name : {"player", "other"})
        ignored_.addCustomIgnore(name);
    ignored_.removeCustomIgnore("other");
    ScriptedPlugin first(MVCommMainSocketPath());
    ScriptedPlugin second(MVCommMainSocketPath());
    checkIn(first, 1, "player");
    checkIn(second, 2, "other");
    EXPECT_EQ(sentTo(first), "9,1,0,100 10,1,0,0 ");
    ignoring_.update();
    EXPECT_EQ(sentTo(first), "") << "once";
}

TEST_F(AppVolumeIgnoringTest, WhoWasIgnoredByAFormerNameIsIgnoredByTheNewOneUntilSomebodyEndsThat) {
    ignored_.addCustomIgnore("Pacat");
    checkIn(plugin_, 1, "paplay", "/usr/bin/pacat");
    EXPECT_TRUE(ignoring_.apps().isEmpty());
    EXPECT_EQ(ignored_.custom(), (QStringList{"Pacat", "paplay"}));
    ignored_.removeCustomIgnore("paplay");
    EXPECT_EQ(ignoring_.apps().size(), 1);
    EXPECT_EQ(sent(), "");
    ScriptedPlugin second(MVCommMainSocketPath());
    ignored_.addCustomIgnore("tool");
    RememberedApps& remembered = ignoring_.rememberedApps();
    remembered.set("player", {40, false});
    checkIn(second, 2, "player", "/usr/bin/tool");
    EXPECT_EQ(ignoring_.apps().size(), 2) << "it has a setting of its own";
}

TEST_F(AppVolumeIgnoringTest, AReportOfAProgramThatTurnsOutToBeIgnoredIsForgotten) {
    ignored_.addCustomIgnore("player");
    ignoring_.changedElsewhere(1, {70, false});
    checkIn(plugin_, 1, "player");
    ignored_.removeCustomIgnore("player");
    ASSERT_EQ(ignoring_.apps().size(), 1);
    EXPECT_EQ(ignoring_.percentOf(*ignoring_.apps()[0]), 100);
}
