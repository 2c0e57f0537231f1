#include "framework/log/LocalTime.h"

#include "support/ManualClock.h"
#include "support/ScopedVariable.h"

#include <gtest/gtest.h>

#include <ctime>

using namespace std::chrono_literals;
using QN::log::LocalTime;

// Around the changes of the offset, in zones with and without a rule, before 1970 and in a zone
// whose offset has seconds.
TEST(LocalTime, IsThatOfTheCLibrary) {
    const support::ManualClock clock;
    const char* const zones[] = {"UTC0", "CET-1CEST,M3.5.0,M10.5.0/3", "NST3:30NDT,M3.2.0,M11.1.0",
                                 "LMT-0:19:32"};
    for (const char* const zone : zones) {
        SCOPED_TRACE(zone);
        const support::ScopedVariable variable("TZ", zone);
        LocalTime localTime;
        for (const std::int64_t start : {-86'400L, 0L, 1'394'181'665L, 1'396'141'100L,
                                         1'414'285'100L, 1'394'346'500L, 4'102'444'740L}) {
            for (std::int64_t second = start; second < start + 200; second += 7) {
                const std::tm& actual = localTime.of(second);
                const std::time_t wanted = second;
                std::tm expected{};
                ::localtime_r(&wanted, &expected);
                EXPECT_EQ(actual.tm_sec, expected.tm_sec);
                EXPECT_EQ(actual.tm_min, expected.tm_min);
                EXPECT_EQ(actual.tm_hour, expected.tm_hour);
                EXPECT_EQ(actual.tm_mday, expected.tm_mday);
                EXPECT_EQ(actual.tm_gmtoff, expected.tm_gmtoff);
            }
        }
    }
}
