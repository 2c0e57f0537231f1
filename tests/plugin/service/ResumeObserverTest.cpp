#include "plugin/service/ResumeObserver.h"

#include "support/BusConnection.h"
#include "support/PrivateBus.h"
#include "support/SystemLogRecorder.h"

#include <gtest/gtest.h>

#include <stdexcept>

using support::BusConnection;

namespace {

void say(BusConnection& bus, bool fallsAsleep) {
    bus.say("/org/freedesktop/login1", "org.freedesktop.login1.Manager", "PrepareForSleep",
            {fallsAsleep});
}

} // namespace

TEST(ResumeObserver, HearsOfEachWakingFromLogindOnly) {
    const support::PrivateBus bus;
    const support::SystemLogRecorder log;
    BusConnection logind(bus.address());
    BusConnection stranger(bus.address());
    BusConnection observing(bus.address());
    int resumed = 0;
    {
        const ResumeObserver observer(
            [&] {
                ++resumed;
                throw std::runtime_error("from a handler");
            },
            *observing);
        say(stranger, false);
        ASSERT_TRUE(logind->registerService("org.freedesktop.login1"));
        for (const bool fallsAsleep : {true, false, true, false})
            say(logind, fallsAsleep);
        EXPECT_TRUE(support::waitUntil([&] { return resumed == 2; }));
    }
    say(logind, false);
    logind.settle(); // it has been sent
    observing.settle();
    EXPECT_EQ(resumed, 2);
    EXPECT_EQ(log.count("from a handler"), 2U);
}
