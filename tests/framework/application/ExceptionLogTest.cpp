#include "ApplicationFixture.h"

#include "platform/base/CallStack.h"

#include <stdexcept>

namespace {

[[gnu::noinline]] void throwTraced() {
    throw platform::TracedError<std::invalid_argument>("traced");
}

} // namespace

TEST_F(ApplicationTest, ExceptionsAreLoggedWithPlaceTextAndTheStackOfWhereTheyWereMade) {
    platform::guarded(4711, &throwTraced);
    ASSERT_EQ(systemLog.lines().size(), 1U);
    const std::string traced = systemLog.lines()[0].text;
    EXPECT_TRUE(traced.starts_with("Exception @ 4711: traced Backtrace: 0 ")) << traced;
    EXPECT_EQ(traced.find("where it was caught"), std::string::npos) << traced;
    EXPECT_NE(traced.find("application_test"), std::string::npos) << traced;

    platform::guarded(4712, [] { throw std::runtime_error("foreign"); });
    platform::guarded(4713, [] { throw 5; });
    EXPECT_TRUE(systemLog.contains(
        "Exception @ 4712: foreign Backtrace: (of the place where it was caught)"));
    EXPECT_TRUE(systemLog.contains("Exception @ 4713: an object that is not a std::exception"));
}
