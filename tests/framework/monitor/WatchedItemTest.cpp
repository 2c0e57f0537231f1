#include "framework/monitor/WatchedItem.h"

#include <gtest/gtest.h>

TEST(WatchedItem, AFileUrlStandsForAPath) {
    const struct {
        std::string url;
        std::optional<std::string> path;
    } cases[] = {
        {"file:///a/b", "/a/b"},
        {"FILE:///a/b", "/a/b"},
        {"file:/a", "/a"},
        {"file://localhost/a%20b%C3%A9", "/a b\xC3\xA9"},
        {"file:///a%2Fb+c", "/a/b+c"},
        {"file:///folder/", "/folder"},
        {"file:///", "/"},
        {"file:///a?query#fragment", "/a"},
        {"file:///a%3Fb%23", "/a?b#"},
        {"file:///a%", std::nullopt},
        {"file:///a%2", std::nullopt},
        {"file:///a%2x", std::nullopt},
        {"file:///a%-1", std::nullopt},
        {"file:///a%00", std::nullopt},
        {"file://host/a", std::nullopt},
        {"file://localhost", std::nullopt},
        {"file:relative", std::nullopt},
        {"file:", std::nullopt},
        {"http:///a", std::nullopt},
        {"fil", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& each : cases)
        EXPECT_EQ(WatchedItem::url(each.url).fileSystemPath(), each.path) << each.url;
}
