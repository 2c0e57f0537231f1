#include "platform/language/PlainTexts.h"

#include "platform/base/HarmlessText.h"
#include "platform/language/MessageLanguages.h"
#include "platform/language/PlainTextTable.h"

#include <algorithm>
#include <string_view>
#include <vector>

std::string PlainTexts::tr(const char* english) {
    return tr(english, platform::messageLanguages());
}

std::string PlainTexts::tr(const char* english, const std::string& languages) {
    const std::vector<std::string> names = platform::catalogueNames(languages);
    const auto table = platform::plainTextTable();
    for (const std::string& name : names) {
        const auto row = std::ranges::find_if(table, [&](const auto& each) {
            return name == each.catalogue && std::string_view(english) == each.english;
        });
        if (row != table.end())
            return row->translated;
    }
    return english;
}

std::string PlainTexts::filled(const std::string& pattern,
                               std::initializer_list<std::string> values) {
    std::string text;
    for (std::size_t at = 0; at < pattern.size(); ++at) {
        const std::size_t number =
            pattern[at] == '%' && at + 1 < pattern.size()
                ? static_cast<std::size_t>(static_cast<unsigned char>(pattern[at + 1])) - '0'
                : 0;
        if (number >= 1 && number <= values.size()) {
            text += platform::shownLine(values.begin()[number - 1]);
            ++at;
        } else {
            text += pattern[at];
        }
    }
    return text;
}
