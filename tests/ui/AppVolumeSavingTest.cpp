#include "comm/MVCommAppValue.h"
#include "platform/PropertyList.h"
#include "platform/RunLoop.h"
#include "support/ManualClock.h"
#include "support/PrivateFolder.h"
#include "support/VolumeModel.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QFile>

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
