#include "app/HelperPresence.h"

#include "app/ScriptedHelper.h"
#include "support/PrivateBus.h"

#include <gtest/gtest.h>

#include <optional>

using support::waitUntil;

TEST(HelperPresence, IsWhatTheHelperTellsAsLongAsItRuns) {
    const support::PrivateBus bus;
    const support::BusConnection ours(bus.address());
    const HelperPresence presence(*ours);
    EXPECT_FALSE(presence.isShown());
    for (const bool isShown : {true, false}) {
        std::optional<ScriptedHelper> helper(std::in_place, bus.address(), isShown);
        EXPECT_TRUE(waitUntil([&] { return presence.isShown() == isShown; }));
        EXPECT_FALSE(presence.isHelper(ours->baseService()));
        helper->setShown(!isShown);
        EXPECT_TRUE(waitUntil([&] { return presence.isShown() == !isShown; }));
        helper->setShown(true);
        EXPECT_TRUE(waitUntil([&] { return presence.isShown(); }));
        helper.reset();
        EXPECT_TRUE(waitUntil([&] { return !presence.isShown(); }));
    }
}
