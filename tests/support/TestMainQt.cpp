#include "support/TestEnvironment.h"
#include "support/WaitUntil.h"
#ifdef TONVALE_TEST_DISPLAY
#include "support/VirtualDisplay.h"
#endif

#include <QApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    const support::TestEnvironment environment;
#ifdef TONVALE_TEST_DISPLAY
    const support::VirtualDisplay display;
#endif
    testing::InitGoogleTest(&argc, argv);
    QApplication application(argc, argv);
    support::setEventServer([] {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
    });
    const int result = RUN_ALL_TESTS();
    support::setEventServer(nullptr);
    return result;
}
