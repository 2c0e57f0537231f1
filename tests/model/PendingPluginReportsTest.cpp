#include "model/PendingPluginReports.h"

#include "support/ManualClock.h"

#include <gtest/gtest.h>

#include <string>

using namespace std::chrono_literals;

namespace {

/// What is kept for the process, and then no longer: percent, and "m" when it is muted.
std::string take(PendingPluginReports& news, std::uint32_t wanted) {
    std::string text;
    news.offer([&](std::uint32_t pid, const ProgramSetting& setting) {
        if (pid == wanted)
            text += std::to_string(setting.percent) + (setting.muted ? "m" : "");
        return pid == wanted;
    });
    return text;
}

} // namespace

TEST(PendingPluginReports, ASettingWaitsAMinuteForItsProcessAndIsTakenOnce) {
    support::ManualClock clock;
    PendingPluginReports news;
    news.keep(1, {10, false});
    clock.advance(30s);
    news.keep(2, {20, true});
    news.keep(1, {30, true}); // in place of the first
    clock.advance(59s);
    EXPECT_EQ(take(news, 1), "30m");
    EXPECT_EQ(take(news, 1), "");
    clock.advance(1s);
    EXPECT_EQ(take(news, 2), "");
}

TEST(PendingPluginReports, TooMuchCostsTheOldest) {
    PendingPluginReports news;
    for (std::uint32_t pid = 0; pid < 1000; ++pid) {
        news.keep(pid, {50, false});
        news.setReason(pid, "why");
    }
    EXPECT_EQ(take(news, 743), "");
    EXPECT_EQ(take(news, 744), "50");
    EXPECT_EQ(news.reason(743), QString());
    EXPECT_EQ(news.reason(744), "why");
}

TEST(PendingPluginReports, AReasonHoldsUntilItIsClearedOrItsProcessHasEnded) {
    PendingPluginReports news;
    const auto nobody = [](std::uint32_t) { return false; };
    const auto one = [](std::uint32_t pid) { return pid == 1; };
    news.setReason(1, "why");
    news.setReason(2, "why");
    news.setReason(2, "because");
    news.setReason(3, QString());
    news.forgetGone(nobody);
    news.forgetGone(one);
    EXPECT_EQ(news.reason(1), "why") << "it may come before the process";
    EXPECT_EQ(news.reason(2), "because");
    news.setReason(2, QString());
    EXPECT_EQ(news.reason(2), QString());
    news.forgetGone(nobody);
    EXPECT_EQ(news.reason(1), QString());
}
