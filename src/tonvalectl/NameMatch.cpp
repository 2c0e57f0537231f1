#include "tonvalectl/NameMatch.h"

#include "platform/base/HarmlessText.h"
#include "platform/language/PlainTexts.h"
#include "tonvalectl/Failure.h"

#include <glib.h>

#include <algorithm>
#include <functional>
#include <memory>

namespace {

using Text = std::unique_ptr<char, decltype(&g_free)>;

/// Compares the visible part of a name, since that is what users type.
std::string folded(const std::string& name) {
    const Text normal(
        g_utf8_normalize(name.data(), static_cast<gssize>(name.size()), G_NORMALIZE_ALL), &g_free);
    if (normal == nullptr)
        return name; // no UTF-8
    const std::string shown = platform::shownLine(normal.get());
    return Text(g_utf8_casefold(shown.c_str(), -1), &g_free).get();
}

std::vector<std::string> those(const std::vector<std::string>& names,
                               const std::function<bool(const std::string&)>& fits) {
    std::vector<std::string> found;
    for (const std::string& name : names) {
        if (fits(name) && std::ranges::find(found, name) == found.end())
            found.push_back(name);
    }
    return found;
}

std::string listed(const std::vector<std::string>& names) {
    std::string list;
    for (const std::string& name : names)
        list += (list.empty() ? "" : ", ") + name;
    return list;
}

} // namespace

std::vector<std::string> namesAlike(const std::string& wanted,
                                    const std::vector<std::string>& names) {
    const std::string key = folded(wanted);
    if (key.empty())
        return {};
    auto found = those(names, [&](const std::string& name) { return name == wanted; });
    return !found.empty()
               ? found
               : those(names, [&](const std::string& name) { return folded(name) == key; });
}

std::vector<std::string> namesMeant(const std::string& wanted,
                                    const std::vector<std::string>& names) {
    const std::string key = folded(wanted);
    auto alike = namesAlike(wanted, names);
    if (!alike.empty() || key.empty())
        return alike;
    return those(names, [&](const std::string& name) { return folded(name).starts_with(key); });
}

std::string nameMeant(const std::string& wanted, const std::vector<std::string>& names) {
    const auto meant = namesMeant(wanted, names);
    if (meant.empty())
        throw Failure(ExitCode::noSuchProgram,
                      PlainTexts::filled(PlainTexts::tr("There is no program “%1”."), {wanted}));
    if (meant.size() > 1)
        throw Failure(
            ExitCode::ambiguousName,
            PlainTexts::filled(PlainTexts::tr("“%1” may be any of: %2"), {wanted, listed(meant)}));
    return meant.front();
}
