#include "support/ChildProcess.h"

#include <gtest/gtest.h>

namespace {

support::CommandResult child(const std::string& what) {
    support::ChildProcess process({TONVALE_APPLICATION_CHILD, what},
                                  {.environment = {}, .keepErrors = false});
    const int status = process.wait().value_or(-1);
    return {status, process.output()};
}

} // namespace

TEST(ApplicationProcess, RunsItsHooksInOrderAndEndsOnceWithStatusZero) {
    constexpr const char* order = "will finish\n"
                                  "complete\n"
                                  "will terminate, posted\n"
                                  "will terminate\n";
    for (const char* const what : {"timer", "thread", "throw"}) {
        const auto result = child(what);
        EXPECT_EQ(result.status, 0) << what;
        EXPECT_EQ(result.output, order) << what;
    }
}

TEST(ApplicationProcess, EndsWith22WithoutItsClass) {
    EXPECT_EQ(child("no-class").status, 22);
}
