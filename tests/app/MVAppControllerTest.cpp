#include "app/MVAppController.h"

#include "platform/MainQueue.h"
#include "platform/RunLoop.h"
#include "platform/RunLoopNotifier.h"
#include "platform/SessionBus.h"
#include "platform/SingleInstance.h"
#include "support/ChildProcess.h"
#include "support/PrivateBus.h"
#include "support/WaitUntil.h"
#include "ui/VolumeWindow.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDBusConnection>
#include <QTimer>

namespace {

VolumeWindow* volumeWindow() {
    for (QWidget* const each : QApplication::topLevelWidgets()) {
        if (auto* const window = qobject_cast<VolumeWindow*>(each))
            return window;
    }
    return nullptr;
}

} // namespace

TEST(MVAppController, AClosedWindowIsHiddenWhileAHelperCanShowItAgainElseItIsTheLast) {
    const support::PrivateBus bus;
    platform::RunLoop loop;
    const platform::RunLoopNotifier notifier(loop);
    const platform::MainQueueService mainQueue(loop);
    MVAppController::initialize();
    MVAppController controller(
        platform::SingleInstance::acquire(QStringLiteral("com.quarnel.Tonvale")));
    controller.awakeFromNib();
    ASSERT_EQ(MVAppController::sharedController(), &controller);
    controller.applicationDidFinishLaunching();
    EXPECT_TRUE(controller.launchComplete());
    VolumeWindow* const window = volumeWindow();
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(window->isVisible());

    auto session = QDBusConnection::sessionBus();
    ASSERT_TRUE(session.registerService(QStringLiteral("com.quarnel.TonvaleHelper")));
    const platform::BusNameWatch helper(QStringLiteral("com.quarnel.TonvaleHelper"));
    ASSERT_TRUE(
        support::waitUntil([&] { return helper.isOwned(); })); // the controller knows it too
    EXPECT_FALSE(window->close());
    EXPECT_FALSE(window->isVisible());
    support::ChildProcess second({TONVALE_PROGRAM});
    EXPECT_EQ(second.wait(), 0) << second.output();
    EXPECT_TRUE(window->isVisible());

    ASSERT_TRUE(session.unregisterService(QStringLiteral("com.quarnel.TonvaleHelper")));
    ASSERT_TRUE(support::waitUntil([&] { return !helper.isOwned(); }));
    QTimer::singleShot(0, window, [&] { EXPECT_TRUE(window->close()); });
    EXPECT_EQ(QApplication::exec(), 0);
    controller.applicationWillTerminate();
    EXPECT_EQ(volumeWindow(), nullptr);
}
