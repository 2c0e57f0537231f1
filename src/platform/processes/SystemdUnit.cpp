#include "platform/processes/SystemdUnit.h"

#include <algorithm>
#include <charconv>

namespace platform {

namespace {

/// Calls back with each component of each group, the outermost first.
template <typename Call>
void forEachComponent(std::string_view controlGroups, Call call) {
    while (!controlGroups.empty()) {
        std::string_view line = controlGroups.substr(0, controlGroups.find('\n'));
        controlGroups.remove_prefix(std::min(line.size() + 1, controlGroups.size()));
        while (!line.empty()) {
            const std::string_view component = line.substr(0, line.find('/'));
            line.remove_prefix(std::min(component.size() + 1, line.size()));
            call(component);
        }
    }
}

bool isUnit(std::string_view name) {
    return name.ends_with(".scope") || name.ends_with(".service");
}

std::string_view take(std::string_view text, std::string_view begin, std::string_view end) {
    const bool fits =
        text.size() > begin.size() + end.size() && text.starts_with(begin) && text.ends_with(end);
    return fits ? text.substr(begin.size(), text.size() - begin.size() - end.size())
                : std::string_view();
}

} // namespace

std::string unescapedUnit(std::string_view unit) {
    constexpr std::string_view mark = "\\x";
    constexpr std::size_t length = 4;
    constexpr int base = 16;
    std::string result;
    while (!unit.empty()) {
        unsigned char code = 0;
        if (unit.size() >= length && unit.starts_with(mark) &&
            std::from_chars(unit.data() + mark.size(), unit.data() + length, code, base).ptr ==
                unit.data() + length) {
            result += static_cast<char>(code);
            unit.remove_prefix(length);
        } else {
            result += unit.front();
            unit.remove_prefix(1);
        }
    }
    return result;
}

std::string systemdUnit(std::string_view controlGroups) {
    std::string found;
    forEachComponent(controlGroups, [&found](std::string_view component) {
        if (isUnit(component))
            found = component;
    });
    return found;
}

std::vector<std::string> unitApplications(std::string_view unit) {
    std::string_view body = take(unit, "app-", ".scope");
    if (!body.empty()) {
        body = body.substr(0, body.rfind('-')); // a number that makes it unique
    } else if (body = take(unit, "app-", ".service"); !body.empty()) {
        const std::size_t at = body.find('@');
        body = body.substr(0, at != std::string_view::npos ? at : body.rfind('-'));
    } else if (body = take(unit, "dbus-", ".service"); !body.empty()) {
        const std::size_t name = body.find('-');
        if (name == std::string_view::npos)
            return {};
        body = body.substr(name + 1);
        body = body.substr(0, body.find('@'));
    }
    std::vector<std::string> ids;
    while (!body.empty()) {
        ids.push_back(unescapedUnit(body));
        const std::size_t launcher = body.find('-');
        body = launcher != std::string_view::npos ? body.substr(launcher + 1) : std::string_view();
    }
    return ids;
}

pid_t processOfScope(std::string_view unit) {
    constexpr pid_t largest = 1 << 22; // the kernel's; launchers also write random numbers or times
    const std::string_view body = take(unit, "app-", ".scope");
    const std::string_view text = body.substr(std::min(body.rfind('-') + 1, body.size()));
    pid_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isOne =
        error == std::errc() && end == text.data() + text.size() && number <= largest;
    return isOne ? number : 0;
}

std::string loginSession(std::string_view controlGroups) {
    std::string found;
    forEachComponent(controlGroups, [&found](std::string_view component) {
        if (const std::string_view id = take(component, "session-", ".scope"); !id.empty())
            found = id;
    });
    return found;
}

std::string snapPart(std::string_view controlGroups) {
    constexpr std::size_t longestMark = 37; // a hyphen and a UUID
    std::string found;
    forEachComponent(controlGroups, [&found](std::string_view component) {
        if (!component.starts_with("snap.") || !isUnit(component))
            return;
        const bool isScope = component.ends_with(".scope");
        component = component.substr(component.find('.') + 1);
        component = component.substr(0, component.rfind('.'));
        const std::size_t dot = component.find('.');
        if (dot == std::string_view::npos)
            return;
        component.remove_prefix(dot + 1);
        if (isScope && component.size() > longestMark &&
            component[component.size() - longestMark] == '-')
            component.remove_suffix(longestMark);
        found = unescapedUnit(component);
    });
    return found;
}

} // namespace platform
