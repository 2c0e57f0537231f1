#include "platform/applications/DesktopEntriesWatch.h"

#include "platform/applications/DesktopEntries.h"
#include "platform/files/FileWatch.h"
#include "platform/loop/DispatchQueue.h"

#include <filesystem>
#include <system_error>
#include <utility>

namespace platform {

namespace {

constexpr std::chrono::milliseconds burstLength{200};

bool isThere(const std::filesystem::path& path) {
    std::error_code ignored; // then it is none for us
    return std::filesystem::exists(path, ignored);
}

} // namespace

DesktopEntriesWatch::DesktopEntriesWatch(RunLoop& loop, DesktopEntries& entries,
                                         std::function<void()> changed)
    : entries_(entries), burst_(loop, [this, changed = std::move(changed)] {
        if (refresh())
            changed();
    }) {
    refresh();
}

DesktopEntriesWatch::~DesktopEntriesWatch() = default;

/// Whether there is any difference to what was read before.
bool DesktopEntriesWatch::refresh() {
    bool isDifferent = entries_.refresh();
    // What comes before it is watched shows only to who looks again.
    while (follow())
        isDifferent |= entries_.refresh();
    return isDifferent;
}

/// Whether there was anything that has not been watched.
bool DesktopEntriesWatch::follow() {
    const std::set<std::string> wanted = wantedPaths();
    std::erase_if(watches_, [&](const auto& each) { return !wanted.contains(each.first); });
    bool isAnyNew = false;
    for (const std::string& path : wanted) {
        const auto [watch, isNew] = watches_.try_emplace(path);
        isAnyNew |= isNew;
        if (watch->second == nullptr)
            watch->second = FileWatch::createForPath(
                path, DispatchQueue::main(),
                [this, path](std::uint32_t events) { notice(path, events); });
    }
    return isAnyNew;
}

/// The folders and the files in them, and of each folder that is missing the nearest one above.
std::set<std::string> DesktopEntriesWatch::wantedPaths() const {
    const std::vector<std::string> paths = entries_.watchedPaths();
    std::set<std::string> wanted;
    for (std::filesystem::path path : paths) {
        while (!isThere(path) && path.has_relative_path())
            path = path.parent_path();
        wanted.insert(path);
    }
    return wanted;
}

void DesktopEntriesWatch::notice(const std::string& path, std::uint32_t events) {
    // A watch stays with its file; what is at the path now gets a new one.
    if ((events & (FileWatch::deleted | FileWatch::renamed | FileWatch::revoked)) != 0)
        watches_.erase(path);
    if (!burst_.isActive())
        burst_.start(burstLength);
}

} // namespace platform
