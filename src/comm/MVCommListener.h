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

/// Where plug-ins come in: the listening socket of one path, and its file. If the file vanishes (a
/// cleaner of temporary folders may remove it), it is made again 0.3 s later; connections stay. If
/// another program serves the path by then, the path is left alone as long as that program does,
/// and the system log gets one line. What fails is tried again every 5 s.
///
/// Main thread only: it hears of changes by the main queue.
class MVCommListener {
  public:
    struct Handlers {
        platform::AcceptSocket::Handler accepted;
        std::function<void()> socketRecreated; ///< the file has been made again
    };

    /// Serves `path` on the thread's run loop, in place of a file that is there. Null when that
    /// fails, with the reason in the system log. A handler must not destroy the object.
    [[nodiscard]] static std::unique_ptr<MVCommListener> open(std::string path, Handlers handlers);

    /// Stops listening and removes the file, unless the path leads to another one by now.
    ~MVCommListener();
    MVCommListener(const MVCommListener&) = delete;
    MVCommListener& operator=(const MVCommListener&) = delete;

    /// To be called when a descriptor has become free (AcceptSocket::resume()).
    void resume();

    /// Whether the path leads into another folder than when it was first served, or into none.
    bool isFolderReplaced() const;

    /// From now on the file is not made again.
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
    std::optional<FileNumber> file_;    // of what stands for the socket at the path
    std::optional<FileNumber> another_; // of what stands in its place, once that has been told
    bool isFailureTold_ = false;
    MVCommLogLimit recreatedLimit_;
    platform::Timer settled_;
    platform::PathsWatch watch_;
};
