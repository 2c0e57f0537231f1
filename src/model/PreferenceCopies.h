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
/// only their container, read it. This happens on its own queue, at most every 100 ms unless
/// requested at once; the last state is always copied everywhere. Copies have mode 0744, are hidden
/// if the folder is ours, and are written atomically (SharedFolder). A failed copy is logged in the
/// system log, once per target and error until it works again, and retried if the error may be
/// temporary: every second if the disk is full, else less and less often.
///
/// Main thread only, unless stated otherwise.
class PreferenceCopies {
  public:
    /// The folders that get a copy, in order. Called on the queue, each time.
    using Folders = std::function<std::vector<std::string>()>;

    /// "Shared" in the local library if it exists, then the containers' folders.
    static Folders standardFolders();

    /// `file` is that of `defaults`, which must outlive the object and any operation that hangs on
    /// a disk; `calls` likewise.
    PreferenceCopies(platform::UserDefaults& defaults, std::filesystem::path file,
                     Folders folders = standardFolders(),
                     platform::SharedFolderCalls& calls = platform::SharedFolderCalls::system());

    /// Marked changes that are not saved yet are dropped. Waits at most 3 s for operations in
    /// progress, unless finish() has timed out.
    ~PreferenceCopies();
    PreferenceCopies(const PreferenceCopies&) = delete;
    PreferenceCopies& operator=(const PreferenceCopies&) = delete;

    /// Saves and copies the current values soon: at once if the last time was more than 100 ms ago.
    /// Returns at once.
    void mark();

    /// Starts to save and copy at once, and returns; `done`, if any, is called on the main queue
    /// when all values set before are in place, or have failed. That may be after this object is
    /// destroyed.
    void saveNow(std::function<void()> done = nullptr);

    /// Saves and copies at once and waits for it, no longer than `bound`: a disk may hang. False if
    /// it has not finished by then.
    [[nodiscard]] bool finish(std::chrono::milliseconds bound = std::chrono::seconds(3));

  private:
    class Worker;

    const std::shared_ptr<Worker> worker_;
    bool hangs_ = false;
};
