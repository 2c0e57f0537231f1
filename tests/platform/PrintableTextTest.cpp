#include "platform/text/PrintableText.h"

#include <gtest/gtest.h>

#include <array>
#include <utility>

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
