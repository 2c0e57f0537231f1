#include "framework/monitor/WatchedItem.h"

#include <gtest/gtest.h>

TEST(WatchedItem, AFileUrlStandsForAPath) {
    const struct {
        std::string url;
        std::string path;
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
    };
    for (const auto& each : cases)
        EXPECT_EQ(WatchedItem::url(each.url).fileSystemPath(), each.path) << each.url;
    for (const char* const url :
         {"file:///a%", "file:///a%2", "file:///a%2x", "file:///a%-1", "file:///a%00",
          "file://host/a", "file://localhost", "file:relative", "file:", "http:///a", "fil", ""})
        EXPECT_EQ(WatchedItem::url(url).fileSystemPath(), std::nullopt) << url;
}
