#include "platform/crash/CrashFolder.h"

#include "platform/base/Directories.h"
#include "platform/base/FileDescriptor.h"
#include "platform/base/SystemLog.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace platform {

namespace {

using Clock = std::chrono::system_clock;

constexpr mode_t ownersOnly = S_IRWXU;

std::string offFile(const std::string& folder) {
    return std::string(folder).append("/.off");
}

struct FolderDeleter {
    void operator()(DIR* folder) const noexcept { ::closedir(folder); }
};

bool isDeathOf(std::string_view program, std::string_view file) {
    if (!file.starts_with(program) || file.size() == program.size())
        return false;
    const char next = file[program.size()];
    return (next == '_' && file.ends_with(crashReportEnding)) ||
           (next == '-' && file.ends_with(crashRecordEnding));
}

/// When it has died, in that order.
std::vector<Clock::time_point> deathsOf(const std::string& program, const std::string& folder) {
    std::vector<Clock::time_point> times;
    const std::unique_ptr<DIR, FolderDeleter> files(::opendir(folder.c_str()));
    if (!files)
        return times;
    while (const dirent* const file = ::readdir(files.get())) {
        struct stat status {};
        if (isDeathOf(program, file->d_name) &&
            ::fstatat(::dirfd(files.get()), file->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0)
            times.push_back(Clock::from_time_t(status.st_mtim.tv_sec));
    }
    std::sort(times.begin(), times.end());
    return times;
}

} // namespace

std::string crashFolder() {
    const std::string logs = logsDirectory();
    return logs.empty() ? logs : logs + "/Tonvale/DiagnosticReports";
}

std::string sharedCrashFolder() {
    return localLibraryDirectory() + "/Logs/DiagnosticReports";
}

bool isCrashWritingOn(const std::string& folder) {
    return ::access(offFile(folder).c_str(), F_OK) != 0;
}

void setCrashWriting(const std::string& folder, bool isOn) {
    if (folder.empty() || isOn == isCrashWritingOn(folder))
        return;
    const std::string file = offFile(folder);
    bool isChanged = false;
    if (isOn) {
        isChanged = ::unlink(file.c_str()) == 0;
    } else if (makeDirectories(folder, ownersOnly)) {
        constexpr int flags = O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW;
        isChanged = bool(FileDescriptor(::open(file.c_str(), flags, S_IRUSR | S_IWUSR)));
    }
    if (!isChanged)
        systemLog(LogPriority::error, "Couldn't change %s: %s", file.c_str(), std::strerror(errno));
}

bool isCrashLoop(const std::string& folder, const std::string& program, Clock::time_point now) {
    constexpr std::size_t tooOften = 3;
    constexpr std::chrono::minutes within{5};
    constexpr std::chrono::hours silence{1};
    const auto deaths = deathsOf(program, folder);
    for (std::size_t last = tooOften - 1; last < deaths.size(); ++last) {
        if (deaths[last] - deaths[last + 1 - tooOften] <= within && deaths[last] > now - silence &&
            deaths[last] <= now + within)
            return true;
    }
    return false;
}

} // namespace platform
