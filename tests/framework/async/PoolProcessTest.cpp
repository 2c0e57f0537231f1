#include "support/ChildProcess.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <string>

namespace {

constexpr std::chrono::minutes bound{2}; // a thousand processes take a while under sanitizers
constexpr int aborted = 128 + SIGABRT;
constexpr const char* limitText = "QN::async has hit its thread limit\n";

std::size_t count(const std::string& text, const std::string& part) {
    std::size_t found = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++found;
    return found;
}

support::CommandResult child(const std::string& what, int number,
                             const std::string& sanitizerOptions = {}) {
    // A program under ThreadSanitizer sleeps at its end, for a second unless told otherwise.
    const char* const given = std::getenv("TSAN_OPTIONS");
    const std::string options =
        std::string(given ? given : "") + " atexit_sleep_ms=5 " + sanitizerOptions;
    support::ChildProcess process({TONVALE_ASYNC_CHILD, what, std::to_string(number)},
                                  {.environment = {{"TSAN_OPTIONS", options}}});
    const int status = process.wait(bound).value_or(-1);
    return {status, process.output()};
}

} // namespace

TEST(PoolProcess, SurvivesFewerThanFiveFailuresAtTheThreadLimit) {
    const support::CommandResult result = child("limit", 2);
    EXPECT_EQ(result.status, 0) << result.output;
    EXPECT_EQ(count(result.output, limitText), count(result.output, "Exception @ "));
    EXPECT_GE(count(result.output, limitText), 2U);
}

TEST(PoolProcess, EndsWithTheTextAtTheFifthFailureInARow) {
    const support::CommandResult result = child("limit", 100);
    EXPECT_EQ(result.status, aborted) << result.output;
    EXPECT_EQ(count(result.output, "Exception @ "), 5U) << result.output;
    EXPECT_TRUE(result.output.starts_with(limitText) ||
                count(result.output, std::string("\n") + limitText) == 1)
        << result.output;
}

TEST(PoolProcess, CountsFailuresOnlyUntilAPassGoesWell) {
    const support::CommandResult result = child("shortages", 6);
    EXPECT_EQ(result.status, 0) << result.output;
}

TEST(PoolProcess, ShrinksByItselfWhenThereIsNothingToDo) {
    EXPECT_EQ(child("shrink", 2).status, 0);
}

TEST(PoolProcess, TriesAgainForAsLongAsTheSystemRefusesAThread) {
    for (const int failures : {1, 5, 50}) {
        const support::CommandResult result = child("refusal", failures);
        EXPECT_EQ(result.status, 0) << result.output;
        EXPECT_EQ(count(result.output, "QN::async has got no thread"), 1U) << result.output;
    }
}

TEST(PoolProcess, ThrowsWhenThereIsNoThreadForTheManagerAndStartsOnTheNextUse) {
    EXPECT_EQ(child("no-manager", 1).status, 0);
}

TEST(PoolProcess, DispatchQueuesAndTheBackgroundLoopGetTheirThreadOnALaterTry) {
    EXPECT_EQ(child("no-dispatch-thread", 3).status, 0);
    EXPECT_EQ(child("no-background-loop", 3).status, 0);
    EXPECT_EQ(child("no-service", 3).status, 0);
}

TEST(PoolProcess, AForkWithThePoolRunningGetsToItsExec) {
    const support::CommandResult result = child("fork", 50);
    EXPECT_EQ(result.status, 0) << result.output;
}

TEST(PoolProcess, EndsWithWorkInFlightAThousandTimes) {
    // A process may end in the moment between a worker's last step and the manager's join.
    const support::CommandResult result = child("end", 1000, "report_thread_leaks=0");
    EXPECT_EQ(result.status, 0) << result.output;
}
