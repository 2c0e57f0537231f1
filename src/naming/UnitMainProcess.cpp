#include "naming/UnitMainProcess.h"

#include "naming/DesktopEntry.h"
#include "naming/ProcessView.h"
#include "platform/processes/SystemdUnit.h"

#include <algorithm>

namespace {

bool isIn(std::span<const pid_t> line, pid_t process) {
    return std::ranges::find(line, process) != line.end();
}

/// Whether nothing else in the unit is older than the process.
bool isOldest(const std::string& unit, const ProcessRecord& process, std::span<const pid_t> line,
              const ProcessView& processes) {
    return std::ranges::none_of(processes.processesOf(process.user), [&](pid_t each) {
        if (isIn(line, each))
            return false;
        const auto other = processes.process(each);
        return other && other->startTime < process.startTime &&
               platform::systemdUnit(other->controlGroups) == unit;
    });
}

} // namespace

bool isUnitMainProcess(const std::string& unit, const DesktopEntry& entry,
                       const ProcessRecord& process, std::span<const pid_t> line,
                       const ProcessView& processes) {
    if (const pid_t first = platform::processOfScope(unit); first != 0)
        return isIn(line, first);
    const bool hasSession = unit.ends_with(".service") && process.session != 0;
    // What has been left behind may have made a session for itself.
    return (hasSession ? isIn(line, process.session) : mayExecAnother(entry)) &&
           isOldest(unit, process, line, processes);
}

bool mayExecAnother(const DesktopEntry& entry) {
    return entry.program.empty() || entry.programIsScript || entry.command.isInterpreted;
}
