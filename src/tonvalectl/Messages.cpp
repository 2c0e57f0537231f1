#include "tonvalectl/Messages.h"

#include "platform/base/HarmlessText.h"

#include <clocale>
#include <libintl.h>

namespace {

constexpr const char* domain = "tonvale";

} // namespace

void Messages::prepare() {
    std::setlocale(LC_ALL, "");
    ::bind_textdomain_codeset(domain, "UTF-8");
}

std::string Messages::text(const char* english) {
    return ::dgettext(domain, english);
}

std::string Messages::text(const char* english, std::initializer_list<std::string> values) {
    const std::string pattern = text(english);
    std::string filled;
    for (std::size_t at = 0; at < pattern.size(); ++at) {
        const std::size_t number =
            pattern[at] == '%' && at + 1 < pattern.size()
                ? static_cast<std::size_t>(static_cast<unsigned char>(pattern[at + 1])) - '0'
                : 0;
        if (number >= 1 && number <= values.size()) {
            filled += platform::shownLine(values.begin()[number - 1]);
            ++at;
        } else {
            filled += pattern[at];
        }
    }
    return filled;
}
