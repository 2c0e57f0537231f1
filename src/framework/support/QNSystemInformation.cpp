#include "framework/support/QNSystemInformation.h"

#include "platform/base/WallClock.h"
#include "platform/processes/MachineFacts.h"
#include "platform/processes/MemoryCounters.h"
#include "platform/processes/SystemFacts.h"
#include "platform/text/Format.h"
#include "platform/text/Texts.h"

#include <algorithm>

using platform::formatted;

namespace {

constexpr std::int64_t minute = 60;
constexpr std::int64_t hour = 60 * minute;
constexpr std::int64_t day = 24 * hour;

/// Of less than a day.
QString shortDuration(std::int64_t seconds) {
    const std::int64_t hours = seconds / hour;
    const std::int64_t minutes = seconds % hour / minute;
    const bool hasMinutes = seconds % hour >= 2 * minute;
    if (hours == 0)
        return hasMinutes ? formatted(Texts::tr("%u minutes"), minutes) : Texts::tr("1 minute");
    if (hasMinutes)
        return hours == 1 ? formatted(Texts::tr("1 hour, %u minutes"), minutes)
                          : formatted(Texts::tr("%u hours, %u minutes"), hours, minutes);
    return hours == 1 ? Texts::tr("1 hour") : formatted(Texts::tr("%u hours"), hours);
}

QString duration(std::int64_t seconds) {
    const std::int64_t days = seconds / day;
    const std::int64_t rest = seconds % day;
    const std::int64_t hours = rest / hour;
    const std::int64_t minutes = rest % hour / minute;
    if (days >= 2)
        return formatted(Texts::tr("%u days, %u:%02u"), days, hours, minutes);
    if (days == 1)
        return formatted(Texts::tr("1 day, %u:%02u"), hours, minutes);
    return shortDuration(rest);
}

QString speedOf(std::uint64_t hertz) {
    constexpr double gigahertz = 1e9;
    return formatted(QStringLiteral("%.2f GHz"), static_cast<double>(hertz) / gigahertz);
}

} // namespace

std::int64_t QNSystemInformation::secondsSinceLastRestart(const std::string& root) {
    const auto boot = platform::bootTime(root);
    if (!boot)
        return 0;
    const auto now = std::chrono::floor<std::chrono::seconds>(platform::WallClock::now());
    return std::max<std::int64_t>(0, (now - *boot).count());
}

QString QNSystemInformation::lastRestartDescription(const std::string& root) {
    return restartDescription(secondsSinceLastRestart(root));
}

QString QNSystemInformation::restartDescription(std::int64_t seconds) {
    if (seconds < 1)
        return Texts::tr("Unknown");
    return formatted(Texts::tr("%@ since last restart"), duration(seconds));
}

QString QNSystemInformation::machineDescription(const std::string& root) {
    const std::string name = platform::machineModelName(root);
    return name.empty() ? QStringLiteral("Macintosh")
                        : formatted(QStringLiteral("%@"), QString::fromStdString(name));
}

QString QNSystemInformation::cpuDescription(const std::string& root) {
    const std::string name = platform::processorName(root);
    const QString type =
        name.empty() ? QStringLiteral("Intel 64-bit") : QString::fromStdString(name);
    const std::uint64_t hertz = platform::processorFrequency(root);
    const QString speed = hertz > 0 ? speedOf(hertz) : QString();
    const unsigned cores = platform::physicalProcessorCount(root);
    const unsigned threads = platform::availableProcessorCount(root);
    if (threads > cores)
        return formatted(Texts::tr("%@ %@, %u cores, %u threads"), type, speed, cores, threads);
    if (cores > 1)
        return formatted(Texts::tr("%@ %@, %u cores"), type, speed, cores);
    return formatted(Texts::tr("%@ %@"), type, speed).trimmed();
}

QStringList QNSystemInformation::graphicsDescriptions(const std::string& root) {
    QStringList cards;
    for (const std::string& card : platform::graphicsCards(root))
        cards.append(QString::fromStdString(card));
    return cards;
}

std::vector<std::pair<std::string, std::uint64_t>>
QNSystemInformation::memoryStatistics(const std::string& root) {
    return platform::memoryCounters(root);
}
