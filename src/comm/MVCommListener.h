#pragma once

#include "comm/MVCommLogLimit.h"
#include "platform/files/PathsWatch.h"
#include "platform/loop/Socket.h"
#include "platform/loop/Timer.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <sys/types.h>
#include <utility>

namespace platform {
class RunLoop;
}

/// The listening socket of one path, and its file. If the file vanishes (a cleaner of temporary
/// folders may remove it), it is recreated 0.3 s later; connections stay open. If another program
/// serves the path by then, the path is not touched as long as that program does, and the system
/// log gets one line. Failures are retried every 5 s.
///
/// Main thread only: changes arrive through the main queue.
class MVCommListener {
  public:
    struct Handlers {
        platform::AcceptSocket::Handler accepted;
        std::function<void()> socketRecreated; ///< the file has been recreated
    };

    /// Serves `path` on the thread's run loop, replacing an existing file. Null on failure, with
    /// the reason in the system log. A handler must not destroy the object.
    [[nodiscard]] static std::unique_ptr<MVCommListener> open(std::string path, Handlers handlers);

    /// Stops listening and removes the file, unless the path now leads to another file.
    ~MVCommListener();
    MVCommListener(const MVCommListener&) = delete;
    MVCommListener& operator=(const MVCommListener&) = delete;

    /// Call this when a descriptor has become free (AcceptSocket::resume()).
    void resume();

    /// Whether the path now leads into a folder other than at first, or into none.
    [[nodiscard]] bool isFolderReplaced() const;

    /// From now on the file is not recreated.
    void stopRecreating();

  private:
    using FileNumber = std::pair<dev_t, ino_t>;

    MVCommListener(std::string path, Handlers handlers);
    bool serve();
    bool bindTo(int descriptor);
    bool listenOn(platform::FileDescriptor descriptor);
    bool isOurs() const;
    void removeFile();
    void look();
    void leaveToAnother(const FileNumber& file);
    void recreateSocket();
    void logError(const char* format, int error) const;

    const std::string path_;
    const std::string folder_;
    const Handlers handlers_;
    platform::RunLoop& loop_;
    std::optional<FileNumber> servedFolder_; // constant once there is a file
    std::unique_ptr<platform::AcceptSocket> baseSock_;
    std::optional<FileNumber> file_;    // of the socket's file at the path
    std::optional<FileNumber> another_; // of the file in its place, once it has been logged
    bool isFailureTold_ = false;
    MVCommLogLimit recreatedLimit_;
    platform::Timer settled_;
    platform::PathsWatch watch_;
};
