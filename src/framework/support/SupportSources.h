#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

/// Where a support report takes its facts from: QNSupportUtils, or plain functions in tests. Each
/// may be called on any thread, and may take seconds; nothing means that there is no such fact.
struct SupportSources {
    std::function<QStringList()> allProcessNames;
    std::function<std::optional<QString>(bool brief)> systemProfile;
    std::function<QString()> systemLogPath; ///< empty if there is none
    std::function<std::optional<QString>(const QStringList& processes)> systemLogForProcesses;
    std::function<std::optional<QString>(const QString& process)> sampleProcess;

    [[nodiscard]] static SupportSources ofTheSystem();
};
