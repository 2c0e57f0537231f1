#include "platform/base/Accounts.h"

#include <cerrno>
#include <cstddef>
#include <grp.h>
#include <pwd.h>
#include <vector>

namespace platform {

namespace {

/// Calls getpwnam_r() or getgrnam_r() with enough room for the entry's texts: a group of many
/// members takes much.
template <typename Entry>
std::optional<Entry> lookUp(int (*find)(const char*, Entry*, char*, std::size_t, Entry**),
                            const std::string& name) {
    constexpr std::size_t firstSize = 1024;
    constexpr std::size_t largestSize = std::size_t{1} << 24U;
    for (std::size_t size = firstSize; size <= largestSize; size *= 2) {
        std::vector<char> texts(size);
        Entry entry{};
        Entry* found = nullptr;
        const int error = find(name.c_str(), &entry, texts.data(), size, &found);
        if (error != ERANGE)
            return found != nullptr ? std::optional(entry) : std::nullopt;
    }
    return std::nullopt;
}

} // namespace

std::optional<uid_t> userNamed(const std::string& name) {
    const auto entry = lookUp<passwd>(&::getpwnam_r, name);
    return entry ? std::optional(entry->pw_uid) : std::nullopt;
}

std::optional<gid_t> groupNamed(const std::string& name) {
    const auto entry = lookUp<group>(&::getgrnam_r, name);
    return entry ? std::optional(entry->gr_gid) : std::nullopt;
}

} // namespace platform
