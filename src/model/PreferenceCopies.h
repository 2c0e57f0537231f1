#pragma once

#include "platform/base/MonotonicClock.h"
#include "platform/files/SharedFolderCalls.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace platform {
class UserDefaults;
}

/// Saves the preferences and copies their file to where plug-ins of other users, and those that see
/// nothing but their container, read it. All of that happens on a queue of its own, and never more
/// often than every 100 ms unless it is asked for at once; the last state always gets everywhere.
/// Copies have the mode 0744, are hidden where the folder is ours, and are whole at any time
/// (SharedFolder). What cannot be copied is a line in the system log, once for a target and error
/// until it works again, and is tried again when the error may pass by itself: every second for
/// want of room, else less and less often.
///
/// Main thread only, when nothing else is said.
class PreferenceCopies {
  public:
    /// The folders that get a copy, in order. Called on the queue, each time.
    using Folders = std::function<std::vector<std::string>()>;

    /// "Shared" in the local library when it is there, then the containers' folders.
    static Folders standardFolders();

    /// `file` is that of `defaults`, which must outlive the object and what hangs on a disk;
    /// `calls` likewise.
    PreferenceCopies(platform::UserDefaults& defaults, std::filesystem::path file,
                     Folders folders = standardFolders(),
                     platform::SharedFolderCalls& calls = platform::SharedFolderCalls::system());

    /// What is marked and not saved is not saved any more. Waits for what is under way, 3 s at
    /// most, unless finish() has waited in vain.
    ~PreferenceCopies();
    PreferenceCopies(const PreferenceCopies&) = delete;
    PreferenceCopies& operator=(const PreferenceCopies&) = delete;

    /// Has what is set by now saved and copied soon: at once when that has not been done for
    /// 100 ms. Returns at once.
    void mark();

    /// Has it saved and copied at once, and returns; `done`, if any, is called on the main queue
    /// when everything set before is in place, or has failed. That may be when this object has
    /// gone.
    void saveNow(std::function<void()> done = nullptr);

    /// Saves and copies at once and waits for that, no longer than `bound`: a disk may hang. False
    /// when it has not ended by then.
    bool finish(std::chrono::milliseconds bound = std::chrono::seconds(3));

  private:
    class Worker;

    const std::shared_ptr<Worker> worker_;
    bool hangs_ = false;
};
