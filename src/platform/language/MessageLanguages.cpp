#include "platform/language/MessageLanguages.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace platform {

namespace {

std::string_view variable(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

std::string_view messageLocale() {
    for (const char* const name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (const std::string_view locale = variable(name); !locale.empty())
            return locale;
    }
    return "";
}

std::string withoutCharacterSet(std::string_view locale) {
    const std::size_t modifier = std::min(locale.find('@'), locale.size());
    return std::string(locale.substr(0, std::min(locale.find('.'), modifier)))
        .append(locale.substr(modifier));
}

} // namespace

std::string messageLanguages() {
    const std::string_view locale = messageLocale();
    const std::string_view name = locale.substr(0, locale.find_first_of(".@"));
    if (name.empty() || name == "C" || name == "POSIX") // where LANGUAGE does not count
        return {};
    const std::string_view languages = variable("LANGUAGE");
    return std::string(languages.empty() ? locale : languages);
}

std::string messageLanguage() {
    const std::string languages = messageLanguages();
    const std::string first = languages.substr(0, languages.find(':'));
    return first.empty() ? "C" : withoutCharacterSet(first);
}

std::vector<std::string> catalogueNames() {
    return catalogueNames(messageLanguages());
}

std::vector<std::string> catalogueNames(const std::string& languages) {
    std::vector<std::string> names;
    for (std::size_t begin = 0, end = 0; end != std::string::npos; begin = end + 1) {
        end = languages.find(':', begin);
        const std::string locale =
            withoutCharacterSet(std::string_view(languages).substr(begin, end - begin));
        if (locale.empty())
            continue;
        const std::string language = locale.substr(0, locale.find_first_of("_@"));
        for (const std::string& name : {locale, locale.substr(0, locale.find('@')), language}) {
            if (std::ranges::find(names, name) == names.end())
                names.push_back(name);
        }
        if (language == "en" || language == "C")
            break;
    }
    return names;
}

} // namespace platform
