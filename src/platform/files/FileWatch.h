#pragma once

#include "platform/files/FileWatchService.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace platform {

class DispatchQueue;

/// Tells when one file or folder changes or goes away. What is watched is the file that the path or
/// descriptor stands for at the beginning, not whatever takes its name later.
///
/// No descriptor is kept open: the kernel's watch belongs to the file itself, and the numbers that
/// identify it cannot pass to another file while the watch lives. So thousands of watches need no
/// descriptors, nothing hinders unmounting, and a folder's removal is not put off.
///
/// Handlers run on the queue, one at a time even when the queue is a concurrent one; what happens
/// while a handler waits for its turn is merged into one call. create…() may be called on any
/// thread, an object by one thread at a time.
class FileWatch {
  public:
    enum Event : std::uint32_t {
        deleted = 0x01, ///< no link is left, or the path stands for another file or for none
        written = 0x02, ///< data was written; an entry of the folder was added, removed or renamed
        renamed = 0x20,
        revoked = 0x40, ///< its file system was unmounted
    };

    /// Called on the queue with at least one Event. Comes once for a deletion, again for each
    /// renaming. A file that was watched by path and has been renamed is told to be deleted only
    /// when nobody has it open any more. When the kernel had to drop events, every watch gets
    /// `written`.
    using Handler = std::function<void(std::uint32_t events)>;

    /// Symbolic links are followed. Null, with errno set, when there is no such file, it may not be
    /// read, or the kernel has no watch left.
    [[nodiscard]] static std::unique_ptr<FileWatch>
    createForPath(const std::string& path, std::shared_ptr<DispatchQueue> queue, Handler handler,
                  FileWatchService& service = FileWatchService::shared());

    /// `descriptor` is not owned, and should be open as long as the object lives: once it is
    /// closed, a deletion is noticed only when nobody else has the file open either. Null as above.
    [[nodiscard]] static std::unique_ptr<FileWatch>
    createForDescriptor(int descriptor, std::shared_ptr<DispatchQueue> queue, Handler handler,
                        FileWatchService& service = FileWatchService::shared());

    /// Cancels.
    ~FileWatch();
    FileWatch(const FileWatch&) = delete;
    FileWatch& operator=(const FileWatch&) = delete;

    /// No handler begins any more, except one that has its turn right now on another thread.
    /// `afterwards` runs on the queue when no handler is running. Only the first call counts.
    void cancel(std::function<void()> afterwards = {});

  private:
    struct State;
    explicit FileWatch(std::shared_ptr<State> state);

    static std::unique_ptr<FileWatch> start(std::shared_ptr<State> state, int descriptor);

    std::shared_ptr<State> state_; // null when cancelled
};

} // namespace platform
