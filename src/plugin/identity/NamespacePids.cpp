#include "plugin/identity/NamespacePids.h"

#include "platform/processes/ProcessInfo.h"

#include <charconv>
#include <dirent.h>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

namespace {

struct FolderCloser {
    void operator()(DIR* folder) const noexcept { ::closedir(folder); }
};

std::optional<pid_t> processOf(std::string_view name) {
    pid_t process = 0;
    const auto [rest, failure] = std::from_chars(name.data(), name.data() + name.size(), process);
    if (failure != std::errc{} || rest != name.data() + name.size())
        return std::nullopt;
    return process;
}

/// 0 when the process has ended.
pid_t ownNumber(pid_t process) {
    if (platform::sharesProcessNumbers(process))
        return process;
    const std::vector<pid_t> numbers = platform::processNumbers(process);
    return numbers.empty() ? 0 : numbers.back();
}

} // namespace

std::vector<pid_t> NamespacePids::find(pid_t own) {
    std::vector<pid_t> found;
    std::unordered_map<pid_t, Known> seen;
    seen.reserve(known_.size());
    const std::unique_ptr<DIR, FolderCloser> folder(::opendir("/proc"));
    while (const dirent* const entry = folder != nullptr ? ::readdir(folder.get()) : nullptr) {
        const auto process = processOf(entry->d_name);
        if (!process)
            continue;
        const auto known = known_.find(*process);
        const bool isKnown = known != known_.end() && known->second.file == entry->d_ino;
        const Known now{entry->d_ino, isKnown ? known->second.own : ownNumber(*process)};
        if (now.own == 0)
            continue;
        seen.emplace(*process, now);
        if (now.own == own)
            found.push_back(*process);
    }
    known_ = std::move(seen);
    return found;
}
