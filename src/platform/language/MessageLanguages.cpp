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
    if (first.empty())
        return "C";
    const std::size_t modifier = std::min(first.find('@'), first.size());
    return first.substr(0, std::min(first.find('.'), modifier)) + first.substr(modifier);
}

} // namespace platform
