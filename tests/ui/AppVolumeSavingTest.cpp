#include "comm/MVCommAppValue.h"
#include "comm/MVCommSocketPath.h"
#include "platform/loop/MainQueue.h"
#include "platform/loop/RunLoop.h"
#include "platform/values/PropertyList.h"
#include "support/ManualClock.h"
#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"
#include "support/SystemLogRecorder.h"
#include "support/VolumeModel.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QFile>

#include <future>

using namespace std::chrono_literals;
using support::waitUntil;

// The clock stands still, so nothing that is put off is done.
TEST(AppVolumeSaving, ReleaseAndQuitDoNotWaitForThePace) {
    const support::ManualClock clock;
    platform::RunLoop loop;
    support::VolumeModel model;
    const support::PrivateFolder folder;
    const auto file = folder.path() / "own/p.plist";
    platform::UserDefaults defaults(file);
    AppVolumeController controller({model.comm, model.ignoredApps, model.workspace, defaults, file,
                                    [&] { return std::vector<std::string>{folder.path()}; }});
    model.workspace.setRunningApplications({{1, "player", {}}});
    MVCommAppValue& app = *controller.apps().at(0);
    const auto percentInCopy = [&] {
        QFile copy(QString::fromStdString(folder.path() / "p.plist"));
        const QByteArray bytes = copy.open(QIODevice::ReadOnly) ? copy.readAll() : QByteArray();
        const QVariant root = platform::parsePropertyList(bytes).value_or(QVariant());
        return AppPreferences(root.toMap()["Apps"]).percent("player");
    };
    app.setVolume(0.1);
    controller.sliderChanged(app);
    ASSERT_TRUE(waitUntil([&] { return percentInCopy() == 10; }));
    app.setVolume(0.2);
    controller.sliderChanged(app);
    controller.sliderReleased(app, 0.3);
    EXPECT_TRUE(waitUntil([&] { return percentInCopy() == 30; }));
    controller.setPercent(app, 40);
    controller.shutdown();
    EXPECT_EQ(percentInCopy(), 40);
}

TEST(AppVolumeSaving, AContainerHasItsCopyBeforeAPluginCanConnectInIt) {
    const support::PrivateFolder folder;
    const support::ScopedVariable home("HOME", folder.path() / "home");
    platform::RunLoop loop;
    const platform::MainQueueService mainQueue(loop);
    support::VolumeModel model;
    const auto file = folder.path() / "own/p.plist";
    platform::UserDefaults defaults(file);
    defaults.set("key", 1);
    auto controller = std::make_unique<AppVolumeController>(AppVolumeController::Surroundings{
        model.comm, model.ignoredApps, model.workspace, defaults, file});
    const auto isServedIn = [&](const std::string& name, bool isCopyExpected) {
        const auto data = folder.path() / "home/Library/Containers" / name / "Data";
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
    controller.reset();
    EXPECT_FALSE(isServedIn("b", false)) << "nobody copies any more";
}

TEST(AppVolumeSaving, QuittingIsNotHeldUpByADiskThatHangs) {
    const support::SystemLogRecorder log;
    platform::RunLoop loop;
    support::VolumeModel model;
    const support::PrivateFolder folder;
    platform::UserDefaults defaults(folder.path() / "p.plist");
    std::promise<void> release;
    AppVolumeController controller({model.comm, model.ignoredApps, model.workspace, defaults,
                                    folder.path() / "p.plist",
                                    [released = std::shared_future(release.get_future())] {
                                        released.wait();
                                        return std::vector<std::string>();
                                    }});
    EXPECT_FALSE(controller.shutdown(5ms));
    EXPECT_TRUE(log.contains("Saving and copying the preferences takes too long to wait for"));
    release.set_value();
    EXPECT_TRUE(controller.shutdown(support::patience));
}
