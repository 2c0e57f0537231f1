#pragma once

#include "platform/files/PathsWatch.h"
#include "platform/loop/Timer.h"

#include <functional>

namespace platform {
class RunLoop;
} // namespace platform

class DesktopEntries;

/// Keeps desktop entries up to date with their folders, some of which may be created later. A burst
/// of changes, for example by a package manager, is read 0.2 s after its beginning, and later
/// changes likewise.
///
/// One thread, that of the run loop, which must serve the main queue, since the changes arrive
/// through it.
class DesktopEntriesWatch {
  public:
    /// Starts to watch, and reads what has changed since the entries were read. `changed` is called
    /// from the run loop after each change; it may destroy the watch. `entries` must outlive the
    /// object.
    DesktopEntriesWatch(platform::RunLoop& loop, DesktopEntries& entries,
                        std::function<void()> changed);

    /// No call comes afterwards.
    ~DesktopEntriesWatch();
    DesktopEntriesWatch(const DesktopEntriesWatch&) = delete;
    DesktopEntriesWatch& operator=(const DesktopEntriesWatch&) = delete;

  private:
    DesktopEntries& entries_;
    platform::Timer burst_;
    platform::PathsWatch paths_;
};
