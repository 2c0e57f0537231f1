#include "naming/DesktopEntriesWatch.h"

#include "naming/DesktopEntries.h"
#include "platform/loop/DispatchQueue.h"

#include <chrono>
#include <utility>

namespace {

constexpr std::chrono::milliseconds burstLength{200};

} // namespace

DesktopEntriesWatch::DesktopEntriesWatch(platform::RunLoop& loop, DesktopEntries& entries,
                                         std::function<void()> changed)
    : entries_(entries)
    , burst_(loop,
             [this, changed = std::move(changed)] {
                 if (entries_.refresh(paths_))
                     changed();
             })
    , paths_(platform::DispatchQueue::main(), [this] { burst_.start(burstLength); }) {
    entries_.refresh(paths_);
}

DesktopEntriesWatch::~DesktopEntriesWatch() = default;
