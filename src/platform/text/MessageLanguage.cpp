#include "platform/text/MessageLanguage.h"

#include <cstdlib>
#include <string_view>

namespace platform {

namespace {

constexpr std::string_view plain = "C";

std::string_view variable(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

/// The locale of messages, as the C library chooses it.
std::string_view messageLocale() {
    for (const char* const name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (const std::string_view value = variable(name); !value.empty())
            return value;
    }
    return plain;
}

std::string withoutCharacterSet(std::string_view locale) {
    const std::size_t modifier = locale.find('@');
    std::string name(locale.substr(0, locale.substr(0, modifier).find('.')));
    if (modifier != std::string_view::npos)
        name += locale.substr(modifier);
    return name;
}

} // namespace

std::string messageLanguage() {
    const std::string locale = withoutCharacterSet(messageLocale());
    if (locale == plain || locale == "POSIX")
        return std::string(plain); // then a list of languages does not count
    std::string_view wanted = variable("LANGUAGE");
    wanted = wanted.substr(0, wanted.find(':'));
    return wanted.empty() ? locale : withoutCharacterSet(wanted);
}

} // namespace platform
