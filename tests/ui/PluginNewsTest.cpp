#include "ui/PluginNews.h"

#include "support/ManualClock.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;

TEST(PluginNews, ASettingWaitsAMinuteForItsProcessAndIsTakenOnce) {
    support::ManualClock clock;
    PluginNews news;
    news.keep(1, {10, false});
    clock.advance(30s);
    news.keep(2, {20, true});
    news.keep(1, {30, true}); // in place of the first
    clock.advance(59s);
    const auto setting = news.take(1);
    ASSERT_TRUE(setting);
    EXPECT_EQ(setting->percent, 30);
    EXPECT_TRUE(setting->isMuted);
    EXPECT_FALSE(news.take(1));
    clock.advance(1s);
    EXPECT_FALSE(news.take(2));
}

TEST(PluginNews, TooMuchCostsTheOldest) {
    PluginNews news;
    for (std::uint32_t pid = 0; pid < 1000; ++pid) {
        news.keep(pid, {50, false});
        news.setReason(pid, "why");
    }
    EXPECT_FALSE(news.take(743));
    EXPECT_TRUE(news.take(744));
    EXPECT_EQ(news.reason(743), QString());
    EXPECT_EQ(news.reason(744), "why");
}

TEST(PluginNews, AReasonHoldsUntilItIsTakenBackOrItsProcessIsGone) {
    PluginNews news;
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
