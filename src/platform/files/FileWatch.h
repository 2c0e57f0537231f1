#pragma once

#include "platform/files/FileWatchService.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace platform {

class DispatchQueue;

/// Reports when one file or folder changes or disappears. It watches the file that the path or
/// descriptor refers to at the beginning, not one that takes its name later.
///
/// No descriptor is kept open: the kernel's watch belongs to the file itself, and the numbers that
/// identify it cannot pass to another file while the watch lives. So thousands of watches need no
/// descriptors and do not block unmounting or the removal of a folder.
///
/// Handlers run on the queue, one at a time even when the queue is a concurrent one; events that
/// arrive while a handler call is queued are merged into it. create…() may be called on any thread,
/// an object by one thread at a time.
class FileWatch {
  public:
    enum Event : std::uint32_t {
        deleted = 0x01, ///< no link is left, or the path refers to another file or to none
        written = 0x02, ///< data was written; an entry of the folder was added, removed or renamed
        renamed = 0x20,
        revoked = 0x40, ///< its file system was unmounted
    };

    /// Called on the queue with at least one Event. Called once for a deletion, and for each
    /// renaming. The deletion of a file that was watched by path and then renamed is reported only
    /// when nobody has it open any more. If the kernel had to drop events, every watch gets
    /// `written`.
    using Handler = std::function<void(std::uint32_t events)>;

    /// Symbolic links are followed. Null, with errno set, if there is no such file, it may not be
    /// read, or the kernel has no watch left.
    [[nodiscard]] static std::unique_ptr<FileWatch>
    createForPath(const std::string& path, std::shared_ptr<DispatchQueue> queue, Handler handler,
                  FileWatchService& service = FileWatchService::shared());

    /// `descriptor` is not owned, and should be open as long as the object lives: once it is
    /// closed, a deletion is noticed only when nobody else has the file open. Null as above.
    [[nodiscard]] static std::unique_ptr<FileWatch>
    createForDescriptor(int descriptor, std::shared_ptr<DispatchQueue> queue, Handler handler,
                        FileWatchService& service = FileWatchService::shared());

    /// Cancels.
    ~FileWatch();
    FileWatch(const FileWatch&) = delete;
    FileWatch& operator=(const FileWatch&) = delete;

    /// No handler call starts any more, except one that is just starting on another thread.
    /// `afterwards` runs on the queue when no handler is running. Only the first call counts.
    void cancel(std::function<void()> afterwards = {});

  private:
    struct State;
    explicit FileWatch(std::shared_ptr<State> state);

    static std::unique_ptr<FileWatch> start(std::shared_ptr<State> state, int descriptor);

    std::shared_ptr<State> state_; // null when cancelled
};

} // namespace platform
