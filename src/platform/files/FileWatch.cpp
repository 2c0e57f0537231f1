#include "platform/files/FileWatch.h"

#include "platform/base/ExceptionReport.h"
#include "platform/loop/DispatchQueue.h"

#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <sys/stat.h>
#include <utility>

namespace platform {

namespace {

// Beside the service's signs in State::pending.
constexpr std::uint32_t cancelled = 1U << 30;
constexpr std::uint32_t submitted = 1U << 31; // a block of ours is in the queue or running

} // namespace

/// Outlives the FileWatch while a block of it is in the queue.
struct FileWatch::State final : FileWatchService::Client {
    /// Where the file stands, as far as that has been told.
    enum class Place { linked, movedAway, deleted };

    State(std::shared_ptr<DispatchQueue> queueToUse, Handler handlerToCall,
          FileWatchService& serviceToUse)
        : queue(std::move(queueToUse)), service(serviceToUse), handler(std::move(handlerToCall)) {}

    void notice(std::uint32_t signs) noexcept override { submit(signs); }

    void submit(std::uint32_t signs) {
        if ((pending.fetch_or(signs | submitted) & submitted) == 0)
            queue->async([this, self = shared_from_this()] { deliver(); });
    }

    /// There is one block at most, so that calls never overlap; a block makes one call, so that the
    /// queue's other work gets its turn.
    void deliver() {
        const std::uint32_t signs = pending.exchange(submitted);
        if ((signs & cancelled) != 0) {
            handler = nullptr; // and pending stays as it is: nothing is submitted any more
            if (const auto last = std::exchange(afterwards, nullptr))
                guarded(kExceptionInDispatchQueue, last);
            return;
        }
        call(signs);
        if (std::uint32_t nothingNew = submitted; !pending.compare_exchange_strong(nothingNew, 0))
            queue->async([this, self = shared_from_this()] { deliver(); });
    }

    void call(std::uint32_t signs) {
        if ((signs & FileWatchService::overflowed) != 0)
            tell(written);
        if ((pending & cancelled) != 0)
            return; // by the handler
        tell(((signs & FileWatchService::changed) != 0 ? written : 0U) | departure(signs));
    }

    void tell(std::uint32_t events) {
        if (events != 0)
            guarded(kExceptionInDispatchQueue, [&] { handler(events); });
    }

    /// The events of going away that the signs amount to, each told once. Looks at the file, which
    /// is why it runs on the queue.
    std::uint32_t departure(std::uint32_t signs) {
        using Service = FileWatchService;
        std::uint32_t events = 0;
        if ((signs & Service::unmounted) != 0) {
            place = Place::deleted;
            events |= revoked;
        }
        if ((signs & Service::moved) != 0) {
            events |= renamed;
            if (place != Place::deleted)
                place = path && !isLinked() ? Place::movedAway : Place::linked;
            if (!path)
                service.follow(*this, descriptor);
        }
        constexpr std::uint32_t doubts = Service::doubtful | Service::overflowed | Service::moved;
        const bool looksGone = (signs & doubts) != 0 && place == Place::linked && !isLinked();
        const bool destroyed = (signs & Service::destroyed) != 0 && place != Place::deleted;
        if (looksGone || destroyed) {
            place = Place::deleted;
            events |= deleted;
        }
        return events;
    }

    /// By path: whether it still stands for the file. By descriptor: whether the file has links. In
    /// doubt yes, since a file that is really gone is announced at last by the kernel.
    bool isLinked() const {
        struct stat now {};
        if ((path ? ::stat(path->c_str(), &now) : ::fstat(descriptor, &now)) != 0)
            return !path || (errno != ENOENT && errno != ENOTDIR);
        const bool same = now.st_dev == identity.st_dev && now.st_ino == identity.st_ino;
        const bool unlinked = now.st_nlink == 0 && identity.st_nlink != 0;
        return same ? !unlinked : !path; // the caller's descriptor may be another file's by now
    }

    const std::shared_ptr<DispatchQueue> queue;
    FileWatchService& service;
    std::atomic<std::uint32_t> pending{0};

    // Constant once the watch has begun.
    std::optional<std::string> path;
    int descriptor = -1;
    struct stat identity {};

    // The block only, except that cancel() hands over `afterwards`.
    Handler handler;
    std::function<void()> afterwards;
    Place place = Place::linked;
};

FileWatch::FileWatch(std::shared_ptr<State> state) : state_(std::move(state)) {}

FileWatch::~FileWatch() {
    cancel();
}

std::unique_ptr<FileWatch> FileWatch::createForPath(const std::string& path,
                                                    std::shared_ptr<DispatchQueue> queue,
                                                    Handler handler, FileWatchService& service) {
    const FileDescriptor opened(::open(path.c_str(), O_PATH | O_CLOEXEC));
    if (!opened)
        return nullptr;
    auto state = std::make_shared<State>(std::move(queue), std::move(handler), service);
    std::error_code ignored; // the open above would have failed as well
    state->path = std::filesystem::absolute(path, ignored);
    return start(std::move(state), opened.get());
}

std::unique_ptr<FileWatch> FileWatch::createForDescriptor(int descriptor,
                                                          std::shared_ptr<DispatchQueue> queue,
                                                          Handler handler,
                                                          FileWatchService& service) {
    auto state = std::make_shared<State>(std::move(queue), std::move(handler), service);
    state->descriptor = descriptor;
    return start(std::move(state), descriptor);
}

std::unique_ptr<FileWatch> FileWatch::start(std::shared_ptr<State> state, int descriptor) {
    if (::fstat(descriptor, &state->identity) != 0 ||
        !state->service.add(*state, descriptor, S_ISDIR(state->identity.st_mode)))
        return nullptr;
    // The kernel tells nothing of a name that went before its watch began.
    if (!state->isLinked())
        state->submit(FileWatchService::doubtful);
    return std::unique_ptr<FileWatch>(new FileWatch(std::move(state)));
}

void FileWatch::cancel(std::function<void()> afterwards) {
    if (!state_)
        return;
    const auto state = std::exchange(state_, nullptr);
    state->service.remove(*state);
    state->afterwards = std::move(afterwards);
    state->submit(cancelled);
}

} // namespace platform
