#include "platform/base/HarmlessText.h"
#include "platform/base/Utf8.h"
#include "platform/language/MessageLanguages.h"
#include "platform/language/PlainTexts.h"
#include "support/ScopedVariable.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <utility>
#include <vector>

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
        EXPECT_EQ(platform::truncatedUtf8(text, 7), fitting);
}

TEST(MessageLanguages, FollowTheEnvironmentAsMessagesDo) {
    struct Case {
        const char* all;
        const char* messages;
        const char* lang;
        const char* language;
        const char* languages;
        const char* first;
    };
    for (const Case& each :
         {Case{"", "", "de_DE.UTF-8", "", "de_DE.UTF-8", "de_DE"},
          Case{"", "fr_FR", "de_DE", "", "fr_FR", "fr_FR"},
          Case{"pt_BR", "fr_FR", "de_DE", "", "pt_BR", "pt_BR"},
          Case{"sr_RS.UTF-8@latin", "", "", "", "sr_RS.UTF-8@latin", "sr_RS@latin"},
          Case{"", "", "de_DE.UTF-8", "de_AT.UTF-8:de:en", "de_AT.UTF-8:de:en", "de_AT"},
          Case{"C.UTF-8", "fr_FR", "de_DE", "de", "", "C"},
          Case{"", "POSIX", "de_DE", "de", "", "C"}, Case{"", "", "", "de", "", "C"}}) {
        const support::ScopedVariable all("LC_ALL", each.all);
        const support::ScopedVariable messages("LC_MESSAGES", each.messages);
        const support::ScopedVariable lang("LANG", each.lang);
        const support::ScopedVariable language("LANGUAGE", each.language);
        EXPECT_EQ(platform::messageLanguages(), each.languages) << each.lang;
        EXPECT_EQ(platform::messageLanguage(), each.first) << each.lang;
    }
}

TEST(MessageLanguages, NameTheCataloguesUpToEnglish) {
    using Names = std::vector<std::string>;
    using Case = std::pair<const char*, Names>;
    for (const auto& [languages, names] :
         {Case{"de_AT.UTF-8:fr", {"de_AT", "de", "fr"}},
          Case{"sr_RS.UTF-8@latin", {"sr_RS@latin", "sr_RS", "sr"}},
          Case{"en_XA:de", {"en_XA", "en"}}, Case{"pt:en_GB:de", {"pt", "en_GB", "en"}},
          Case{"C:de", {"C"}}}) {
        const support::ScopedVariable locale("LC_ALL", "de_DE.UTF-8");
        const support::ScopedVariable language("LANGUAGE", languages);
        EXPECT_EQ(platform::catalogueNames(), names) << languages;
    }
}

TEST(PlainTexts, AreThoseOfTheFirstTableThatHasThem) {
    const support::ScopedVariable locale("LC_ALL", "de_DE.UTF-8");
    using Case = std::pair<const char*, const char*>;
    for (const auto& [languages, text] :
         {Case{"en_XA", "[Töñvålë ïš ñöt rüññïñg.]"}, Case{"xx:en_XA", "[Töñvålë ïš ñöt rüññïñg.]"},
          Case{"en:en_XA", "Tonvale is not running."}, Case{"xx", "Tonvale is not running."}}) {
        const support::ScopedVariable language("LANGUAGE", languages);
        EXPECT_EQ(PlainTexts::tr("Tonvale is not running."), text) << languages;
        const support::ScopedVariable english("LANGUAGE", "en");
        EXPECT_EQ(PlainTexts::tr("Tonvale is not running.", languages), text) << languages;
    }
    EXPECT_EQ(PlainTexts::filled("%2, %1 and %3%", {"o\nne", "two"}), "two, o ne and %3%");
}

TEST(PrintableText, EscapesWhatWouldMakeALineShowSomethingElse) {
    using Case = std::pair<std::string_view, std::string_view>;
    using std::operator""sv;
    for (const auto& [text, printable] : std::array{
             Case{"", ""}, Case{"plain name", "plain name"},
             Case{"n\u00e4me \u2014 \U0001F3B5 \u05d0", "n\u00e4me \u2014 \U0001F3B5 \u05d0"},
             Case{"two\nlines\r", "two\\nlines\\u000d"}, Case{"\x1b[31m\x7f", "\\u001b[31m\\u007f"},
             Case{"\u009b2J", "\\u009b2J"},
             Case{"a\u2028b\u202ec\u2069", "a\\u2028b\\u202ec\\u2069"},
             Case{"nul\0inside"sv, "nul\\u0000inside"},
             Case{"\xff\xc3(\xe2\x80", "\\xff\\xc3(\\xe2\\x80"}})
        EXPECT_EQ(platform::printableText(text), printable);
}

TEST(ShownLine, LeavesNothingThatCommandsATerminalTurnsTextOrHides) {
    using Case = std::pair<std::string_view, std::string_view>;
    using std::operator""sv;
    for (const auto& [text, shown] : std::array{
             Case{"", ""}, Case{"plain name", "plain name"},
             Case{"\x1b[31mred\x1b]0;t\x07", " [31mred ]0;t "},
             Case{"two\r\nlines\x7f", "two  lines "}, Case{"\u009b2J\u0085\u2028x", " 2J  x"},
             Case{"nul\0inside"sv, "nul inside"}, Case{"a\u202eb\u2066c\u2069d", "abcd"},
             Case{"Fire\u200bfox\ufeff\u00ad\u2060\U000E0041", "Firefox"},
             Case{
                 "\u05d0\u200f \u0646\u200c\u0647 \U0001F469\u200d\U0001F4BB \u2764\ufe0f e\u0301",
                 "\u05d0\u200f \u0646\u200c\u0647 \U0001F469\u200d\U0001F4BB \u2764\ufe0f e\u0301"},
             Case{"\xff\xc3+\x9b", "??+?"}})
        EXPECT_EQ(platform::shownLine(text), shown);
}
