#include "app/MVAppController.h"

#include "platform/MainQueue.h"
#include "platform/RunLoop.h"
#include "platform/RunLoopNotifier.h"
#include "platform/SingleInstance.h"
#include "support/PrivateBus.h"
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
    EXPECT_FALSE(window->close());
    EXPECT_FALSE(window->isVisible());
    controller.applicationShouldHandleReopen(false, QString());
    EXPECT_TRUE(window->isVisible());

    ASSERT_TRUE(session.unregisterService(QStringLiteral("com.quarnel.TonvaleHelper")));
    QTimer::singleShot(0, window, [&] { EXPECT_TRUE(window->close()); });
    EXPECT_EQ(QApplication::exec(), 0) << "the last window has gone";
    controller.applicationWillTerminate();
    EXPECT_EQ(volumeWindow(), nullptr);
}
