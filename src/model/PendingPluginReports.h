#pragma once

#include "platform/base/MonotonicClock.h"
#include "settings/ProgramSetting.h"

#include <QHash>
#include <QString>

#include <cstdint>
#include <deque>
#include <functional>

/// What the audio plug-in has told about processes beside its socket, until it can be used.
/// Bounded: what is too much costs the oldest. Main thread only.
class PendingPluginReports {
  public:
    /// Keeps a setting, in place of an older one of the process, for a minute.
    void keep(std::uint32_t pid, const ProgramSetting& setting);

    /// Shows `isUsed` all settings that are kept, the oldest first. Those for which it answers true
    /// are kept no longer.
    void offer(const std::function<bool(std::uint32_t pid, const ProgramSetting&)>& isUsed);

    /// Why the volume of a process cannot be set; empty when it can.
    void setReason(std::uint32_t pid, const QString& reason);
    QString reason(std::uint32_t pid) const;

    /// To be called when processes have come or gone: the reason of one that was known and is not
    /// any more goes, for another process may get its number.
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
