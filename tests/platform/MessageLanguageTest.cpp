#include "platform/text/MessageLanguage.h"

#include "support/ScopedVariable.h"

#include <gtest/gtest.h>

#include <string>

TEST(MessageLanguage, IsWhatTheEnvironmentAsksFor) {
    const struct {
        const char* all;
        const char* messages;
        const char* lang;
        const char* list;
        const char* answer;
    } cases[] = {
        {"", "", "", "", "C"},
        {"", "", "de_DE.UTF-8", "", "de_DE"},
        {"", "fr_CA", "de_DE.UTF-8", "", "fr_CA"},
        {"sr_RS.UTF-8@latin", "fr_CA", "de_DE", "", "sr_RS@latin"},
        {"", "", "de_DE.UTF-8", "de_AT.UTF-8:de:en", "de_AT"},
        {"C.UTF-8", "", "de_DE", "de", "C"},
        {"POSIX", "", "", "", "C"},
    };
    for (const auto& each : cases) {
        const support::ScopedVariable all("LC_ALL", std::string(each.all));
        const support::ScopedVariable messages("LC_MESSAGES", std::string(each.messages));
        const support::ScopedVariable lang("LANG", std::string(each.lang));
        const support::ScopedVariable list("LANGUAGE", std::string(each.list));
        EXPECT_EQ(platform::messageLanguage(), each.answer) << each.all << each.lang;
    }
}
