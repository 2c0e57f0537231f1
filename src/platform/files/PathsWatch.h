#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace platform {

class DispatchQueue;

/// Reports when any of several files and folders may have changed, appeared or disappeared. If one
/// is missing, its nearest existing parent is watched. It watches paths, whatever files they refer
/// to.
///
/// It reports once, and again when something happens after the next follow(), in which the user of
/// the class reads what has changed. follow() and the handler are called on the queue; the
/// destructor may be called on any thread.
class PathsWatch {
  public:
    /// A call of `changed` in progress on another thread may end after the destruction; none
    /// starts.
    PathsWatch(std::shared_ptr<DispatchQueue> queue, std::function<void()> changed);
    ~PathsWatch();
    PathsWatch(const PathsWatch&) = delete;
    PathsWatch& operator=(const PathsWatch&) = delete;

    /// Whether follow() must be called: it has never been called, or something has happened since.
    [[nodiscard]] bool isDue() const noexcept;

    /// Watches these paths only. Returns whether one of them is new: it may have changed before it
    /// was watched, so read it again and call this again. A path that the kernel refuses to watch
    /// is tried again at the next call. Throws std::system_error if no thread can be started.
    bool follow(const std::vector<std::string>& paths);

  private:
    struct State;
    const std::shared_ptr<State> state_;
};

} // namespace platform
