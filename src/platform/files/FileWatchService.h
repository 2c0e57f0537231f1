#pragma once

#include "platform/base/FileDescriptor.h"
#include "platform/base/Mutex.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

struct inotify_event;

namespace platform {

class RunLoop;
class RunLoopSource;

/// The calls to the kernel that a FileWatchService makes. Tests replace them with calls that fail.
class InotifyCalls {
  public:
    virtual ~InotifyCalls() = default;

    /// Each as the system call of that name, with errno.
    [[nodiscard]] virtual int init() const noexcept;
    [[nodiscard]] virtual int addWatch(int instance, const char* path,
                                       std::uint32_t mask) const noexcept;
    virtual void removeWatch(int instance, int watch) const noexcept;
};

/// The inotify instance behind all FileWatches of the process: instances are few (128 for a user),
/// watches are many. Clients that watch the same file share a watch of the kernel, which goes with
/// the last of them. Events are read on a run loop's thread. Any thread.
class FileWatchService {
  public:
    /// An event about a client's file.
    enum Sign : std::uint32_t {
        changed = 1,
        doubtful = 2, ///< a link to it may have been removed
        moved = 4,
        destroyed = 8, ///< no links and nobody has it open
        unmounted = 16,
        overflowed = 32, ///< anything may have happened, events were lost
    };

    class Client : public std::enable_shared_from_this<Client> {
      public:
        virtual ~Client() = default;

        /// Called on the run loop's thread; one that was under way may come after remove().
        virtual void notice(std::uint32_t signs) noexcept = 0;

      private:
        friend class FileWatchService;
        // Guarded by the service's mutex.
        int watch_ = -1;
        int parentWatch_ = -1;  // of the folder that a folder lies in
        std::string entryName_; // a folder's name in that
    };

    /// The service of the process, on the background loop.
    static FileWatchService& shared();

    /// Events are read on `loop`'s thread, on which the service must also be destroyed, when it has
    /// no clients left.
    explicit FileWatchService(RunLoop& loop, const InotifyCalls& calls);
    ~FileWatchService();
    FileWatchService(const FileWatchService&) = delete;
    FileWatchService& operator=(const FileWatchService&) = delete;

    /// Watches the file behind an open descriptor, which may be closed afterwards. The client must
    /// be removed before it goes. False, with errno set, when the kernel refuses; that instances or
    /// watches have run out is also logged, once until it works again.
    [[nodiscard]] bool add(Client& client, int descriptor, bool isFolder);

    /// Call this if a client's folder, open as `descriptor`, may have been moved into another one.
    void follow(Client& client, int descriptor);

    void remove(Client& client) noexcept;

  private:
    struct Link {
        Client* client;
        bool asParent;
    };
    using Notices = std::vector<std::pair<std::shared_ptr<Client>, std::uint32_t>>;

    bool openInstance() REQUIRES(mutex_);
    bool listen(int instance);
    void abandon() EXCLUDES(mutex_);
    int link(Client& client, int descriptor, std::uint32_t mask, bool asParent) REQUIRES(mutex_);
    void unlink(Client& client, int watch, bool asParent) noexcept REQUIRES(mutex_);
    void linkToParent(Client& client, int descriptor) REQUIRES(mutex_);
    void readEvents(int instance) EXCLUDES(mutex_);
    void collect(const inotify_event& event, std::string_view name, Notices& notices)
        REQUIRES(mutex_);
    void collectOverflow(Notices& notices) const REQUIRES(mutex_);
    void forget(int watch) REQUIRES(mutex_);
    void reportRefusal(int error) REQUIRES(mutex_);

    RunLoop& loop_;
    const InotifyCalls& calls_;

    Mutex mutex_;
    FileDescriptor instance_ GUARDED_BY(mutex_);                          // stays once it is open
    std::unordered_map<int, std::vector<Link>> links_ GUARDED_BY(mutex_); // by the kernel's watch
    bool refusalReported_ GUARDED_BY(mutex_) = false;

    // The loop's thread only.
    std::unique_ptr<RunLoopSource> source_;
    std::vector<std::byte> buffer_;
};

} // namespace platform
