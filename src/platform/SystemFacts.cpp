#include "platform/SystemFacts.h"

#include <fstream>
#include <string_view>
#include <sys/utsname.h>

namespace platform {

namespace {

/// Takes the quotes and backslashes away that a shell would.
std::string unquoted(std::string_view text) {
    std::string result;
    char quote = '\0';
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char character = text[i];
        if (character == quote)
            quote = '\0';
        else if (quote == '\0' && (character == '"' || character == '\''))
            quote = character;
        else if (character == '\\' && quote != '\'' && i + 1 < text.size())
            result += text[++i];
        else
            result += character;
    }
    return result;
}

} // namespace

std::string productVersion() {
    constexpr std::string_view key = "VERSION_ID=";
    for (const char* const file : {"/etc/os-release", "/usr/lib/os-release"}) {
        std::ifstream stream(file);
        for (std::string line; std::getline(stream, line);) {
            if (line.starts_with(key))
                return unquoted(std::string_view(line).substr(key.size()));
        }
        if (stream.is_open())
            break; // the second stands in for a missing first one
    }
    return {};
}

std::string productBuild() {
    utsname facts{};
    return ::uname(&facts) == 0 ? facts.release : "";
}

} // namespace platform
