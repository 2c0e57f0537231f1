#pragma once

#include "platform/base/MonotonicClock.h"
#include "settings/ProgramSetting.h"

#include <QHash>
#include <QString>

#include <cstdint>
#include <deque>
#include <functional>

/// The audio plug-in's reports about processes from the bus, until they can be used. Bounded: if
/// there are too many, the oldest are dropped. Main thread only.
class PendingPluginReports {
  public:
    /// Keeps a setting for a minute, replacing an older one of the process.
    void keep(std::uint32_t pid, const ProgramSetting& setting);

    /// Calls `isUsed` for all kept settings, the oldest first. Drops those for which it returns
    /// true.
    void offer(const std::function<bool(std::uint32_t pid, const ProgramSetting&)>& isUsed);

    /// Why the volume of a process cannot be set; empty if it can.
    void setReason(std::uint32_t pid, const QString& reason);
    [[nodiscard]] QString reason(std::uint32_t pid) const;

    /// Call this when processes have appeared or ended: drops the reasons of processes that are no
    /// longer known, since their pids may be reused.
    void forgetGone(const std::function<bool(std::uint32_t pid)>& isKnown);

    void clear();

  private:
    struct Kept {
        std::uint32_t pid;
        ProgramSetting setting;
        platform::MonotonicClock::time_point end;
    };
    struct Reason {
        std::uint32_t pid;
        QString text;
        bool wasKnown;
    };

    std::deque<Kept> kept_;      // the oldest first
    std::deque<Reason> reasons_; // likewise
};
