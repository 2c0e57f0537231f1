#pragma once

#include "platform/files/PathsWatch.h"
#include "platform/loop/Timer.h"

#include <functional>

namespace platform {
class RunLoop;
} // namespace platform

class DesktopEntries;

/// Keeps desktop entries as they are in their folders, some of which may be missing and appear
/// later. A burst of changes, as by a package manager, is read 0.2 s after its beginning, and what
/// follows in the same manner.
///
/// One thread, that of the run loop, which has to serve the main queue, since the changes come by
/// that.
class DesktopEntriesWatch {
  public:
    /// Begins to watch, and reads what has changed since the entries were read. `changed` is
    /// called from the run loop after each difference; it may destroy the watch. `entries` must
    /// outlive the object.
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
