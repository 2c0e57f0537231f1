#include "platform/authorization/PrivilegedTool.h"

#include "platform/base/SystemLog.h"
#include "platform/base/ToolHandshake.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace platform {

namespace {

constexpr int dismissed = 126;
constexpr int notRun = 127;
constexpr std::size_t longestText = std::size_t{1} << 20U;

/// Appends what can be read now; what would make the text too long is dropped. False at the end.
bool readInto(std::string& text, int descriptor) {
    std::array<char, 4096> part;
    const ssize_t size = ::read(descriptor, part.data(), part.size());
    if (size < 0)
        return errno == EAGAIN || errno == EINTR;
    if (text.size() <= longestText)
        text.append(part.data(), static_cast<std::size_t>(size));
    return size > 0;
}

/// Waits for output on either, reads it, and returns when `isDone` holds or the first has ended.
template <typename Condition>
void readUntil(int first, std::string& firstText, int second, std::string& secondText,
               const Condition& isDone) {
    pollfd streams[] = {{first, POLLIN, 0}, {second, POLLIN, 0}};
    while (!isDone()) {
        if (::poll(streams, std::size(streams), -1) < 0)
            continue;
        if (streams[1].revents != 0 && !readInto(secondText, second))
            streams[1].fd = -1;
        if (streams[0].revents != 0 && !readInto(firstText, first))
            return;
    }
}

bool isWritableFolder(const std::filesystem::path& path) noexcept {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
           ::faccessat(AT_FDCWD, path.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

/// Whether others' files in the folder are protected from this user.
bool isProtectedBy(const std::filesystem::path& folder, const struct stat& item) noexcept {
    struct stat status {};
    const uid_t user = ::geteuid();
    return ::stat(folder.c_str(), &status) != 0 || ((status.st_mode & S_ISVTX) != 0 && user != 0 &&
                                                    user != item.st_uid && user != status.st_uid);
}

} // namespace

bool mayReplace(const std::string& path) {
    const std::filesystem::path item(path);
    struct stat status {};
    if (::lstat(path.c_str(), &status) == 0)
        return isWritableFolder(item.parent_path()) && !isProtectedBy(item.parent_path(), status) &&
               (!S_ISDIR(status.st_mode) || isWritableFolder(item));
    // The first folder that exists takes the missing ones.
    std::filesystem::path folder = item.parent_path();
    while (::lstat(folder.c_str(), &status) != 0 && errno == ENOENT && folder.has_relative_path())
        folder = folder.parent_path();
    return isWritableFolder(folder);
}

PrivilegedTool::PrivilegedTool(std::vector<std::string> arguments, Rights rights,
                               std::string pkexec)
    : arguments_(std::move(arguments)), rights_(rights), pkexec_(std::move(pkexec)) {}

PrivilegedTool::Answer PrivilegedTool::authorize() {
    if (rights_ == Rights::administrator && ::access(pkexec_.c_str(), X_OK) != 0)
        return Answer::noPkexec;
    if (!start())
        return isCancelled() ? Answer::cancelled : Answer::failed;
    return awaitAuthorization() ? Answer::granted : reasonOfEnd();
}

bool PrivilegedTool::start() {
    std::vector<std::string> command;
    if (rights_ == Rights::administrator)
        command = {pkexec_, "--disable-internal-agent"};
    command.insert(command.end(), arguments_.begin(), arguments_.end());
    try {
        const ScopedLock lock(mutex_);
        if (!isCancelled_)
            child_.emplace(command);
        return child_.has_value();
    } catch (const std::system_error& error) {
        status_ = error.code().value();
        systemLog(LogPriority::error, "Couldn't start %s", error.what());
        return false;
    }
}

void PrivilegedTool::cancel() {
    const ScopedLock lock(mutex_);
    isCancelled_ = true;
    if (child_)
        child_->end();
}

bool PrivilegedTool::isCancelled() {
    const ScopedLock lock(mutex_);
    return isCancelled_;
}

void PrivilegedTool::forgetChild() {
    const ScopedLock lock(mutex_);
    child_.reset();
}

bool PrivilegedTool::awaitAuthorization() {
    const auto isAuthorized = [this] {
        return messages_.find(toolIsAuthorized) != std::string::npos;
    };
    readUntil(child_->errors(), messages_, child_->output(), reply_, isAuthorized);
    return isAuthorized();
}

PrivilegedTool::Answer PrivilegedTool::reasonOfEnd() {
    const auto says = [this](std::string_view text) {
        return messages_.find(text) != std::string::npos;
    };
    status_ = child_->status();
    forgetChild();
    if (isCancelled())
        return Answer::cancelled;
    if (rights_ == Rights::own || (status_ != dismissed && status_ != notRun)) {
        systemLog(LogPriority::error, "%s ended with %d: %s", arguments_.front().c_str(), status_,
                  messages_.c_str());
        return Answer::failed;
    }
    if (status_ == dismissed)
        return Answer::cancelled;
    systemLog(LogPriority::error, "pkexec: %s", messages_.c_str());
    // pkexec has one status for all of these, and does not translate what it says.
    if (says("No authentication agent"))
        return Answer::noAgent;
    if (says("Error getting authority") || says("Error checking for authorization"))
        return Answer::noPolkit;
    return says("Not authorized") ? Answer::notAuthorized : Answer::failed;
}

std::string PrivilegedTool::run() {
    if (!child_)
        return {};
    child_->send(toolMayGoOn);
    readUntil(child_->output(), reply_, child_->errors(), messages_, [] { return false; });
    status_ = child_->status();
    forgetChild();
    return reply_.size() > longestText ? std::string() : std::exchange(reply_, {});
}

} // namespace platform
