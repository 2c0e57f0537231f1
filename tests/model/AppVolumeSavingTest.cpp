#include "comm/MVCommSocketPath.h"
#include "model/MVCommAppValue.h"
#include "platform/loop/MainQueue.h"
#include "platform/loop/RunLoop.h"
#include "support/ManualClock.h"
#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"
#include "support/SystemLogRecorder.h"
#include "support/VolumeModel.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <future>

using namespace std::chrono_literals;
using support::waitUntil;

namespace {

class AppVolumeSavingTest : public testing::Test {
  protected:
    void start(const PreferenceCopies::Folders& folders = PreferenceCopies::standardFolders()) {
        controller_.emplace(AppVolumeController::Dependencies{
            model_.comm, model_.ignoredApps, model_.workspace, defaults_, file_, folders});
    }

    const support::SystemLogRecorder log_;
    const support::PrivateFolder folder_;
    const support::ScopedVariable home_{"HOME", folder_.path() / "home"};
    platform::RunLoop loop_;
    const platform::MainQueueService mainQueue_{loop_};
    support::VolumeModel model_;
    const std::filesystem::path file_ = folder_.path() / "own/p.plist";
    platform::UserDefaults defaults_{file_};
    std::optional<AppVolumeController> controller_;
};

} // namespace

// The clock stops, so nothing that is put off is done.
TEST_F(AppVolumeSavingTest, ReleaseAndQuitDoNotWaitForThePace) {
    const support::ManualClock clock;
    start([&] { return std::vector<std::string>{folder_.path()}; });
    model_.workspace.setRunningApplications({{1, "player", {}}});
    MVCommAppValue& app = *controller_->apps().at(0);
    const auto percentInCopy = [&] {
        const platform::UserDefaults copy(folder_.path() / "p.plist");
        return AppPreferences(copy.value("Apps")).setting("player").percent;
    };
    app.setVolume(0.1);
    controller_->sliderChanged(app);
    ASSERT_TRUE(waitUntil([&] { return percentInCopy() == 10; }));
    app.setVolume(0.2);
    controller_->sliderChanged(app);
    controller_->sliderReleased(app, 0.3);
    EXPECT_TRUE(waitUntil([&] { return percentInCopy() == 30; }));
    controller_->setPercent(app, 40);
    controller_->shutdown();
    EXPECT_EQ(percentInCopy(), 40);
}

TEST_F(AppVolumeSavingTest, AContainerHasItsCopyBeforeAPluginCanConnectInIt) {
    defaults_.set("key", 1);
    start();
    const auto isServedIn = [&](const std::string& name, bool isCopyExpected) {
        const auto data = folder_.path() / "home/Library/Containers" / name / "Data";
        std::filesystem::create_directories(data);
        bool hadCopy = false;
        EXPECT_TRUE(waitUntil([&] {
            hadCopy = std::filesystem::exists(data / "p.plist");
            return std::filesystem::exists(data / kMVCommSocketName);
        }));
        EXPECT_EQ(std::filesystem::exists(data / "p.plist"), isCopyExpected);
        return hadCopy;
    };
    EXPECT_TRUE(isServedIn("a", true));
    controller_.reset();
    EXPECT_FALSE(isServedIn("b", false)) << "nobody copies any more";
}

TEST_F(AppVolumeSavingTest, QuittingIsNotHeldUpByADiskThatHangs) {
    std::promise<void> release;
    start([released = std::shared_future(release.get_future())] {
        released.wait();
        return std::vector<std::string>();
    });
    EXPECT_FALSE(controller_->shutdown(5ms));
    EXPECT_TRUE(log_.contains("Saving and copying the preferences takes too long"));
    release.set_value();
    EXPECT_TRUE(controller_->shutdown(support::patience));
}
