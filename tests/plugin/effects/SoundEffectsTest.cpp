#include "plugin/effects/SoundEffects.h"

#include <gtest/gtest.h>

TEST(SoundEffects, AreTheStreamsOfTheRolesForNotifications) {
    for (const char* const role : {"Notification", "event", "Event", "NOTIFICATION"})
        EXPECT_TRUE(SoundEffects::isNotification(role)) << role;
    for (const char* const role : {"", "Music", "events", "even", "Communication", "Notification "})
        EXPECT_FALSE(SoundEffects::isNotification(role)) << role;
}
