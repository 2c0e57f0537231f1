#include "framework/monitor/WatchedItem.h"

#include <charconv>
#include <string_view>
#include <strings.h>

namespace {

constexpr std::string_view fileScheme = "file:";

bool hasFileScheme(const std::string& url) {
    return ::strncasecmp(url.c_str(), fileScheme.data(), fileScheme.size()) == 0;
}

std::optional<std::string> percentDecoded(std::string_view text) {
    std::string decoded;
    while (!text.empty()) {
        if (text.front() != '%') {
            decoded += text.front();
            text.remove_prefix(1);
            continue;
        }
        unsigned char byte = 0;
        const std::string_view digits = text.substr(1, 2);
        const auto end = digits.data() + digits.size();
        if (digits.size() != 2 || std::from_chars(digits.data(), end, byte, 16).ptr != end)
            return std::nullopt;
        decoded += static_cast<char>(byte);
        text.remove_prefix(3);
    }
    return decoded;
}

/// The encoded path of a file URL; empty when it is on another host.
std::string_view pathOfFileUrl(std::string_view url) {
    url.remove_prefix(fileScheme.size());
    if (url.starts_with("//")) {
        url.remove_prefix(2);
        const std::size_t slash = url.find('/');
        const std::string_view host = url.substr(0, slash);
        if (slash == std::string_view::npos || (!host.empty() && host != "localhost"))
            return {};
        url.remove_prefix(slash);
    }
    url = url.substr(0, url.find_first_of("?#"));
    while (url.size() > 1 && url.ends_with('/'))
        url.remove_suffix(1);
    return url;
}

} // namespace

bool WatchedItem::isFileUrl() const {
    const Url* const url = std::get_if<Url>(&value_);
    return url != nullptr && hasFileScheme(url->text);
}

std::optional<int> WatchedItem::descriptor() const {
    const int* const number = std::get_if<int>(&value_);
    return number != nullptr ? std::optional(*number) : std::nullopt;
}

std::optional<std::string> WatchedItem::fileSystemPath() const {
    std::optional<std::string> path;
    if (const Path* const given = std::get_if<Path>(&value_)) {
        path = given->text;
    } else if (isFileUrl()) {
        path = percentDecoded(pathOfFileUrl(std::get<Url>(value_).text));
        if (path && !path->starts_with('/'))
            return std::nullopt;
    }
    if (path && path->find('\0') != std::string::npos)
        return std::nullopt;
    return path;
}

std::string WatchedItem::description() const {
    if (const Url* const url = std::get_if<Url>(&value_))
        return url->text;
    if (const Path* const path = std::get_if<Path>(&value_))
        return path->text;
    if (const int* const number = std::get_if<int>(&value_))
        return std::to_string(*number);
    return "(null)";
}
