#pragma once

#include <QString>
#include <QStringList>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/// Describes the machine, in texts for people. Any thread.
///
/// `root` is the folder that holds /proc and /sys, for a machine other than this one.
class QNSystemInformation {
  public:
    QNSystemInformation() = delete;

    /// 0 if unknown.
    [[nodiscard]] static std::int64_t secondsSinceLastRestart(const std::string& root = {});

    /// "1 hour, 2 minutes since last restart". Under two minutes past a whole hour the minutes are
    /// left out.
    [[nodiscard]] static QString lastRestartDescription(const std::string& root = {});

    /// Of so many seconds.
    [[nodiscard]] static QString restartDescription(std::int64_t seconds);

    [[nodiscard]] static QString machineDescription(const std::string& root = {});

    /// "AMD Ryzen 5 5600U 4.29 GHz, 6 cores, 12 threads"
    [[nodiscard]] static QString cpuDescription(const std::string& root = {});

    /// One of each graphics card.
    [[nodiscard]] static QStringList graphicsDescriptions(const std::string& root = {});

    /// The counters of memory in a fixed order; see platform::memoryCounters().
    [[nodiscard]] static std::vector<std::pair<std::string, std::uint64_t>>
    memoryStatistics(const std::string& root = {});
};
