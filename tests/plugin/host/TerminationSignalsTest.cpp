#include "plugin/host/TerminationSignals.h"
#include "platform/loop/RunLoop.h"

#include <gtest/gtest.h>

#include <csignal>
#include <vector>

TEST(TerminationSignals, ReachTheRunLoop) {
    platform::RunLoop loop;
    std::vector<int> received;
    const TerminationSignals signals(loop, [&](int number) { received.push_back(number); });
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        ASSERT_EQ(::raise(number), 0);
        loop.turn();
    }
    EXPECT_EQ(received, (std::vector{SIGTERM, SIGINT, SIGHUP}));
}
