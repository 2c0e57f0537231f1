#include "platform/processes/ProcessSandbox.h"

#include "platform/processes/SystemdUnit.h"

namespace platform {

namespace {

/// Takes the text up to `end` off the front of `rest`.
std::string_view takeUntil(std::string_view& rest, char end) {
    const std::string_view taken = rest.substr(0, rest.find(end));
    rest.remove_prefix(taken.size() == rest.size() ? taken.size() : taken.size() + 1);
    return taken;
}

std::string flatpakIn(std::string_view description) {
    constexpr std::string_view key = "name=";
    bool inApplication = false;
    while (!description.empty()) {
        const std::string_view line = takeUntil(description, '\n');
        if (line.starts_with('['))
            inApplication = line == "[Application]";
        else if (inApplication && line.starts_with(key))
            return std::string(line.substr(key.size()));
    }
    return {};
}

std::string sandboxOfUnit(std::string_view unit) {
    constexpr std::string_view flatpak = "app-flatpak-";
    constexpr std::string_view snap = "snap.";
    constexpr std::string_view scope = ".scope";
    const bool isScope = unit.ends_with(scope);
    if (isScope && unit.starts_with(flatpak)) {
        // An instance number follows the id.
        const std::string_view body =
            unit.substr(flatpak.size(), unit.size() - flatpak.size() - scope.size());
        return unescapedUnit(body.substr(0, body.rfind('-')));
    }
    if (unit.starts_with(snap) && (isScope || unit.ends_with(".service"))) {
        const std::size_t end = unit.find('.', snap.size());
        return unescapedUnit(unit.substr(0, end));
    }
    return {};
}

std::string sandboxIn(std::string_view controlGroups) {
    while (!controlGroups.empty()) {
        std::string_view path = takeUntil(controlGroups, '\n');
        while (!path.empty()) {
            std::string found = sandboxOfUnit(takeUntil(path, '/'));
            if (!found.empty())
                return found;
        }
    }
    return {};
}

} // namespace

std::string sandboxApplication(std::string_view flatpakDescription,
                               std::string_view controlGroups) {
    std::string flatpak = flatpakIn(flatpakDescription);
    return flatpak.empty() ? sandboxIn(controlGroups) : flatpak;
}

} // namespace platform
