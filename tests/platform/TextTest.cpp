#include "platform/text/MessageLanguages.h"
#include "platform/text/Utf8.h"
#include "support/ScopedVariable.h"

#include <gtest/gtest.h>

TEST(FittingUtf8, CutsBetweenCharactersAndMakesValid) {
    struct Case {
        std::string text;
        std::string fitting;
    };
    const std::string full(6, 'a');
    for (const auto& [text, fitting] :
         {Case{full + "\xC3\xA4", full}, Case{full + "bc", full + "b"},
          Case{"aaaaa\xC3\xA4z", "aaaaa\xC3\xA4"}, Case{"b\xFF\xC3 d", "b?? d"},
          Case{"\xF0\x9F\x8E\xB5", "\xF0\x9F\x8E\xB5"}, Case{"o\xC0\xAF", "o??"},
          Case{"s\xED\xA0\x80", "s???"}, Case{"cut \xE2\x82", "cut ??"},
          Case{std::string("a\0b", 3), "a"}, Case{"", ""}})
        EXPECT_EQ(platform::fittingUtf8(text, 7), fitting);
}

TEST(MessageLanguages, FollowTheEnvironmentAsMessagesDo) {
    struct Case {
        const char* all;
        const char* messages;
        const char* lang;
        const char* language;
        const char* languages;
    };
    for (const Case& each :
         {Case{"", "", "de_DE.UTF-8", "", "de_DE.UTF-8"}, Case{"", "fr_FR", "de_DE", "", "fr_FR"},
          Case{"pt_BR", "fr_FR", "de_DE", "", "pt_BR"},
          Case{"", "", "de_DE.UTF-8", "de_AT:de:en", "de_AT:de:en"},
          Case{"C.UTF-8", "fr_FR", "de_DE", "de", ""}, Case{"", "POSIX", "de_DE", "de", ""},
          Case{"", "", "", "de", ""}}) {
        const support::ScopedVariable all("LC_ALL", each.all);
        const support::ScopedVariable messages("LC_MESSAGES", each.messages);
        const support::ScopedVariable lang("LANG", each.lang);
        const support::ScopedVariable language("LANGUAGE", each.language);
        EXPECT_EQ(platform::messageLanguages(), each.languages) << each.lang;
    }
}
