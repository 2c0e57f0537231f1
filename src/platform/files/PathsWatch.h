#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace platform {

class DispatchQueue;

/// Tells when any of several files and folders may have changed, come or gone. Of one that is
/// missing the nearest folder above is watched. What is at a path counts, whatever file that is.
///
/// It tells once, and again when something happens after the next follow(): then who uses it reads
/// what has changed. follow() is called on the queue, and so is the handler; an exception is the
/// destruction, which may happen anywhere.
class PathsWatch {
  public:
    /// A `changed` that runs right now on another thread may end after the destruction; none
    /// begins.
    PathsWatch(std::shared_ptr<DispatchQueue> queue, std::function<void()> changed);
    ~PathsWatch();
    PathsWatch(const PathsWatch&) = delete;
    PathsWatch& operator=(const PathsWatch&) = delete;

    /// Whether follow() is due: it has never been called, or something has happened since.
    bool isDue() const noexcept;

    /// Watches these paths, and no others any more. Whether there is one among them that has not
    /// been watched: what happens to it before this goes unnoticed, so it is read once more, and
    /// this is called again. A path that the kernel does not let be watched is tried at the next
    /// call. Throws std::system_error when there is no thread for it.
    bool follow(const std::vector<std::string>& paths);

  private:
    struct State;
    const std::shared_ptr<State> state_;
};

} // namespace platform
