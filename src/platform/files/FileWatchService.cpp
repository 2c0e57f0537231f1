#include "platform/files/FileWatchService.h"

#include "platform/base/Mutex.h"
#include "platform/base/SystemLog.h"
#include "platform/loop/BackgroundLoop.h"
#include "platform/loop/RunLoop.h"
#include "platform/loop/RunLoopSource.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <sys/inotify.h>
#include <unistd.h>

namespace platform {

namespace {

constexpr std::size_t bufferSize = 32768;

// Masks only ever grow (IN_MASK_ADD): the watch of a file is shared, and may serve both those who
// observe a folder and those who observe a folder inside it.
constexpr std::uint32_t selfMask = IN_MASK_ADD | IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF;
constexpr std::uint32_t fileMask = selfMask | IN_MODIFY;
constexpr std::uint32_t entriesChanged = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO;
constexpr std::uint32_t folderMask = selfMask | entriesChanged;
constexpr std::uint32_t parentMask = IN_MASK_ADD | IN_DELETE;

std::string pathOf(int descriptor) {
    return "/proc/self/fd/" + std::to_string(descriptor);
}

/// The last component of the path that a descriptor stands for, links resolved.
std::string nameOf(int descriptor) {
    std::string target(PATH_MAX, '\0');
    const ssize_t length = ::readlink(pathOf(descriptor).c_str(), target.data(), target.size());
    if (length <= 0)
        return {};
    target.resize(static_cast<std::size_t>(length));
    return target.substr(target.rfind('/') + 1);
}

std::uint32_t signsForItself(std::uint32_t mask, std::string_view entry) noexcept {
    std::uint32_t signs = 0;
    if ((mask & entriesChanged) != 0 || ((mask & IN_MODIFY) != 0 && entry.empty()))
        signs |= FileWatchService::changed;
    if ((mask & IN_ATTRIB) != 0 && entry.empty())
        signs |= FileWatchService::doubtful;
    if ((mask & IN_MOVE_SELF) != 0)
        signs |= FileWatchService::moved;
    // The kernel gives up a watch only when there is nothing left to watch.
    if ((mask & (IN_DELETE_SELF | IN_IGNORED)) != 0)
        signs |= FileWatchService::destroyed;
    if ((mask & IN_UNMOUNT) != 0)
        signs |= FileWatchService::unmounted;
    return signs;
}

bool isFolderRemoved(std::uint32_t mask) noexcept {
    return (mask & IN_DELETE) != 0 && (mask & IN_ISDIR) != 0;
}

} // namespace

int InotifyCalls::init() const noexcept {
    return ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
}

int InotifyCalls::addWatch(int instance, const char* path, std::uint32_t mask) const noexcept {
    return ::inotify_add_watch(instance, path, mask);
}

void InotifyCalls::removeWatch(int instance, int watch) const noexcept {
    ::inotify_rm_watch(instance, watch);
}

FileWatchService& FileWatchService::shared() {
    // Never destroyed, as the loop.
    static const auto& calls = *new InotifyCalls;
    static auto& service = *new FileWatchService(backgroundLoop(), calls);
    return service;
}

FileWatchService::FileWatchService(RunLoop& loop, const InotifyCalls& calls)
    : loop_(loop), calls_(calls) {}

FileWatchService::~FileWatchService() = default;

bool FileWatchService::add(Client& client, int descriptor, bool isFolder) {
    const ScopedLock lock(mutex_);
    if (openInstance())
        client.watch_ = link(client, descriptor, isFolder ? folderMask : fileMask, false);
    if (client.watch_ < 0) {
        const int error = errno;
        reportRefusal(error);
        errno = error;
        return false;
    }
    refusalReported_ = false;
    if (isFolder)
        linkToParent(client, descriptor);
    return true;
}

void FileWatchService::follow(Client& client, int descriptor) {
    const ScopedLock lock(mutex_);
    if (client.watch_ < 0 || client.entryName_.empty())
        return; // it has been removed, or is not a folder
    unlink(client, std::exchange(client.parentWatch_, -1), true);
    linkToParent(client, descriptor);
}

void FileWatchService::remove(Client& client) noexcept {
    const ScopedLock lock(mutex_);
    unlink(client, std::exchange(client.watch_, -1), false);
    unlink(client, std::exchange(client.parentWatch_, -1), true);
}

bool FileWatchService::openInstance() {
    if (instance_)
        return true;
    instance_.reset(calls_.init());
    if (!instance_)
        return false;
    if (RunLoop::current() != &loop_) {
        loop_.post([this, instance = instance_.get()] {
            if (!listen(instance))
                abandon();
        });
    } else if (!listen(instance_.get())) {
        instance_.reset();
        return false;
    }
    return true;
}

bool FileWatchService::listen(int instance) {
    buffer_.resize(bufferSize);
    source_ = RunLoopSource::create(loop_, instance, RunLoopSource::reading,
                                    [this, instance] { readEvents(instance); });
    return source_ != nullptr;
}

/// The loop does not take the instance: what is watched so far stays mute, and the next add() tries
/// with another one.
void FileWatchService::abandon() {
    systemLog(LogPriority::error, "Changes of files are not detected: %s", std::strerror(errno));
    const ScopedLock lock(mutex_);
    while (!links_.empty())
        forget(links_.begin()->first);
    instance_.reset();
}

/// Returns the kernel's watch, -1 on failure. It is the same for the same file, whatever the path:
/// so asking and noting the answer must not be parted by somebody's removal of that watch.
int FileWatchService::link(Client& client, int descriptor, std::uint32_t mask, bool asParent) {
    const int watch = calls_.addWatch(instance_.get(), pathOf(descriptor).c_str(), mask);
    if (watch >= 0)
        links_[watch].push_back({&client, asParent});
    return watch;
}

void FileWatchService::unlink(Client& client, int watch, bool asParent) noexcept {
    const auto found = links_.find(watch);
    if (found == links_.end())
        return; // the kernel gave it up
    auto& links = found->second;
    const auto own = std::find_if(links.begin(), links.end(), [&](const Link& each) {
        return each.client == &client && each.asParent == asParent;
    });
    if (own == links.end())
        return;
    *own = links.back();
    links.pop_back();
    if (!links.empty())
        return;
    links_.erase(found);
    // The number is not given out again (the kernel counts up), so that events of it which wait to
    // be read, or a removal that comes after the kernel's own, can be ignored.
    calls_.removeWatch(instance_.get(), watch);
}

/// A folder that is open or a working directory sends no event when it is removed; its parent does.
/// A parent that may not be read is done without: then the removal shows when the last one leaves.
void FileWatchService::linkToParent(Client& client, int descriptor) {
    const FileDescriptor parent(::openat(descriptor, "..", O_PATH | O_DIRECTORY | O_CLOEXEC));
    client.entryName_ = nameOf(descriptor);
    if (parent && !client.entryName_.empty())
        client.parentWatch_ = link(client, parent.get(), parentMask, true);
}

void FileWatchService::readEvents(int instance) {
    const ssize_t got = ::read(instance, buffer_.data(), buffer_.size());
    const std::size_t size = got > 0 ? static_cast<std::size_t>(got) : 0;
    Notices notices;
    {
        const ScopedLock lock(mutex_);
        inotify_event event{};
        for (std::size_t at = 0; at + sizeof event <= size; at += sizeof event + event.len) {
            std::memcpy(&event, &buffer_[at], sizeof event);
            // The name is padded with NULs.
            const auto* const name = reinterpret_cast<const char*>(&buffer_[at]) + sizeof event;
            collect(event, {name, ::strnlen(name, event.len)}, notices);
        }
    }
    for (const auto& [client, signs] : notices)
        client->notice(signs);
}

void FileWatchService::collect(const inotify_event& event, std::string_view name,
                               Notices& notices) {
    if ((event.mask & IN_Q_OVERFLOW) != 0)
        collectOverflow(notices);
    const auto found = links_.find(event.wd);
    if (found == links_.end())
        return;
    const std::uint32_t ownSigns = signsForItself(event.mask, name);
    for (const auto& [client, asParent] : found->second) {
        std::uint32_t signs = ownSigns;
        if (asParent)
            signs = isFolderRemoved(event.mask) && name == client->entryName_ ? doubtful : 0U;
        if (signs != 0)
            notices.emplace_back(client->shared_from_this(), signs);
    }
    if ((event.mask & IN_IGNORED) != 0)
        forget(event.wd);
}

void FileWatchService::collectOverflow(Notices& notices) const {
    for (const auto& [watch, links] : links_) {
        for (const auto& [client, asParent] : links) {
            if (!asParent)
                notices.emplace_back(client->shared_from_this(), overflowed);
        }
    }
}

void FileWatchService::forget(int watch) {
    const auto found = links_.find(watch);
    for (const auto& [client, asParent] : found->second)
        (asParent ? client->parentWatch_ : client->watch_) = -1;
    links_.erase(found);
}

void FileWatchService::reportRefusal(int error) {
    const bool ranOut = error == ENOSPC || error == EMFILE || error == ENFILE || error == ENOMEM;
    if (!ranOut || std::exchange(refusalReported_, true))
        return;
    systemLog(LogPriority::warning, "Couldn't watch a file: %s (see fs.inotify in sysctl)",
              std::strerror(error));
}

} // namespace platform
