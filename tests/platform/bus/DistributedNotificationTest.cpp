#include "platform/bus/DistributedNotification.h"

#include "support/BusConnection.h"
#include "support/PrivateBus.h"
#include "support/SystemLogRecorder.h"

#include <gtest/gtest.h>

#include <stdexcept>

using platform::DistributedNotificationObserver;

// One test program for one bus: Qt connects to the session bus once in a process.
TEST(DistributedNotification, TravelsOverTheBusUnderTheNamesThatAnyProgramCanUse) {
    const support::PrivateBus bus;
    int received = 0;
    int other = 0;
    const DistributedNotificationObserver observer("com.quarnel.mivo.guiDidLaunch", [&] {
        ++received;
        throw std::runtime_error("from an observer");
    });
    const DistributedNotificationObserver otherObserver("com.quarnel.mivo.other", [&] { ++other; });
    ASSERT_TRUE(observer.isActive());

    support::SystemLogRecorder log;
    EXPECT_TRUE(platform::postDistributedNotification("com.quarnel.mivo.guiDidLaunch"));
    ASSERT_TRUE(support::waitUntil([&] { return received == 1; }));

    support::BusConnection stranger(bus.address());
    stranger.say("/com/quarnel/mivo", "com.quarnel.mivo", "guiDidLaunch");
    ASSERT_TRUE(support::waitUntil([&] { return received == 2; }));
    EXPECT_EQ(other, 0);
    EXPECT_EQ(log.count("from an observer"), 2U);
    EXPECT_FALSE(platform::postDistributedNotification("no name at all"));
    EXPECT_EQ(log.count("Couldn't post no name at all"), 1U);
}
