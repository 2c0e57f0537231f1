#include "platform/files/PathsWatch.h"

#include "platform/files/FileWatch.h"
#include "platform/loop/DispatchQueue.h"

#include <filesystem>
#include <map>
#include <set>
#include <system_error>
#include <utility>

namespace platform {

namespace {

bool isThere(const std::filesystem::path& path) {
    std::error_code ignored; // then it is none for us
    return std::filesystem::exists(path, ignored);
}

/// What can be watched in place of the paths.
std::set<std::string> watchable(const std::vector<std::string>& paths) {
    std::set<std::string> found;
    for (std::filesystem::path path : paths) {
        while (!isThere(path) && path.has_relative_path())
            path = path.parent_path();
        found.insert(path);
    }
    return found;
}

} // namespace

/// Outlives the PathsWatch while a handler runs.
struct PathsWatch::State {
    void notice(const std::string& path, std::uint32_t events) {
        // A watch stays with its file; what is at the path now gets a new one.
        if ((events & (FileWatch::deleted | FileWatch::renamed | FileWatch::revoked)) != 0)
            watches.erase(path);
        if (!std::exchange(isDue, true))
            changed();
    }

    std::shared_ptr<DispatchQueue> queue;
    std::function<void()> changed;
    std::map<std::string, std::unique_ptr<FileWatch>> watches; // by path
    bool isDue = true;
};

PathsWatch::PathsWatch(std::shared_ptr<DispatchQueue> queue, std::function<void()> changed)
    : state_(std::make_shared<State>()) {
    state_->queue = std::move(queue);
    state_->changed = std::move(changed);
}

PathsWatch::~PathsWatch() = default;

bool PathsWatch::isDue() const noexcept {
    return state_->isDue;
}

bool PathsWatch::follow(const std::vector<std::string>& paths) {
    const std::set<std::string> wanted = watchable(paths);
    std::erase_if(state_->watches, [&](const auto& each) { return !wanted.contains(each.first); });
    bool isAnyNew = false;
    for (const std::string& path : wanted) {
        const auto [watch, isNew] = state_->watches.try_emplace(path);
        isAnyNew |= isNew;
        if (watch->second != nullptr)
            continue;
        watch->second = FileWatch::createForPath(
            path, state_->queue, [weak = std::weak_ptr(state_), path](std::uint32_t events) {
                if (const auto state = weak.lock())
                    state->notice(path, events);
            });
    }
    state_->isDue = false;
    return isAnyNew;
}

} // namespace platform
