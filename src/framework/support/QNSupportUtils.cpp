#include "framework/support/QNSupportUtils.h"

#include "framework/application/QNApplication.h"
#include "framework/installer/QNInstallBOM.h"
#include "framework/support/ProcessSampler.h"
#include "framework/support/SystemProfile.h"

#include "platform/base/CallStack.h"
#include "platform/base/ExceptionReport.h"
#include "platform/bus/SessionBus.h"
#include "platform/crash/CrashFolder.h"
#include "platform/desktop/AccountEmail.h"
#include "platform/processes/MachineFacts.h"
#include "platform/processes/ToolRun.h"
#include "platform/text/Format.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

namespace {

constexpr std::size_t longestLog = std::size_t{2} << 20U;

QNSupportUtils::Tools& tools() {
    static QNSupportUtils::Tools all;
    return all;
}

bool isExecutableOrBundle(const QUrl& url) {
    const QFileInfo item(url.toLocalFile());
    if (item.isDir())
        return QFileInfo(item.filePath() + QStringLiteral("/Contents/Info.plist")).isFile();
    return item.isFile() && item.isExecutable();
}

/// What the journal has of any of these programs and of our service.
std::vector<std::string> journalCall(const QStringList& names) {
    constexpr qsizetype longestCommand = 15;
    std::vector<std::string> call{tools().journalctl,   "--quiet",
                                  "--no-pager",         "--no-hostname",
                                  "--output=short-iso", "--lines=20000"};
    call.insert(call.end(), {"_SYSTEMD_USER_UNIT=tonvale-plugin.service", "+",
                             "USER_UNIT=tonvale-plugin.service"});
    for (const QString& name : names) {
        call.insert(call.end(), {"+", "_COMM=" + name.left(longestCommand).toStdString(), "+",
                                 "SYSLOG_IDENTIFIER=" + name.toStdString()});
    }
    return call;
}

/// The lines at the end of a log file that have one of the names in them.
QString linesWith(const QStringList& names, const QString& path) {
    QFile file(path);
    if (path.isEmpty() || !file.open(QIODevice::ReadOnly))
        return {};
    file.seek(std::max<qint64>(0, file.size() - static_cast<qint64>(longestLog)));
    QString found;
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine());
        if (std::any_of(names.begin(), names.end(), [&](const QString& name) {
                return line.contains(name, Qt::CaseInsensitive);
            }))
            found += line;
    }
    return found;
}

QStringList crashReportsIn(const std::string& folder, const QStringList& names) {
    QStringList found;
    // Without QDir::Hidden it lists no name that begins with a dot.
    const QDir reports(QString::fromStdString(folder));
    for (const QFileInfo& file :
         reports.entryInfoList({QStringLiteral("*.crash")}, QDir::Files, QDir::Name)) {
        if (std::any_of(names.begin(), names.end(),
                        [&](const QString& name) { return file.fileName().contains(name); }))
            found.append(file.filePath());
    }
    return found;
}

} // namespace

void QNSupportUtils::setTools(Tools replacement) {
    tools() = std::move(replacement);
}

QString QNSupportUtils::systemLogPath() {
    return QString::fromStdString(platform::systemLogFile(tools().root));
}

std::optional<QString> QNSupportUtils::systemLogForProcesses(const QStringList& names) {
    platform::ToolCall call;
    call.arguments = journalCall(names);
    call.timeLimit = tools().toolTime;
    call.outputLimit = longestLog;
    call.keepsEnd = true;
    const auto journal = platform::runTool(call);
    if (journal && !journal->output.empty() && (journal->status == 0 || journal->isLate))
        return QString::fromStdString(journal->output);
    const QString lines = linesWith(names, systemLogPath());
    return lines.isEmpty() ? std::nullopt : std::optional(lines);
}

std::optional<QString> QNSupportUtils::systemProfile(bool brief) {
    const SystemProfile profile(tools());
    return brief ? profile.brief() : profile.full();
}

std::optional<QString> QNSupportUtils::sampleProcess(const QString& name) {
    try {
        return ProcessSampler(tools()).sample(name);
    } catch (...) {
        QNLog(1, "%s::%u Exception: %@ Backtrace: %@", "+[QNSupportUtils sampleProcess:]", __LINE__,
              platform::describeException(std::current_exception()),
              platform::CallStack::here().description());
        return std::nullopt;
    }
}

std::optional<QStringList>
QNSupportUtils::crashReportsForProcesses(const QStringList& names,
                                         const QStringList& otherFolders) {
    QStringList found = crashReportsIn(platform::crashFolder(), names);
    found += crashReportsIn(platform::sharedCrashFolder(), names);
    for (const QString& folder : otherFolders)
        found += crashReportsIn(folder.toStdString(), names);
    return found.isEmpty() ? std::nullopt : std::optional(found);
}

QStringList QNSupportUtils::allProcessNames() {
    return {QStringLiteral("Tonvale"), QStringLiteral("TonvalePlugin"),
            QStringLiteral("TNInstaller"), QStringLiteral("TonvaleHelper"),
            QStringLiteral("tonvalectl")};
}

std::optional<QString> QNSupportUtils::userEmail() {
    const QString address = platform::accountEmail(platform::systemBus());
    return address.isEmpty() ? std::nullopt : std::optional(address);
}

QString QNSupportUtils::bundleInfo(const platform::Bundle& bundle) {
    return platform::formatted(
        QStringLiteral("Name = %@\nCFBundleVersion = %@\nCFBundleShortVersion = %@\n"
                       "QNBuildIdentifier = %@"),
        bundle.name(), bundle.text("CFBundleVersion"), bundle.version(),
        bundle.text("QNBuildIdentifier"));
}

std::optional<QList<QUrl>>
QNSupportUtils::installerExecutablesAndBundles(const platform::Bundle& bundle) {
    const auto manifest = QNInstallBOM::BOMInfoWithBundle(bundle);
    if (!manifest)
        return std::nullopt;
    QList<QUrl> found;
    for (const QNInstallResource& resource : manifest->installResources()) {
        if (isExecutableOrBundle(resource.from()))
            found.append(resource.from());
    }
    return found;
}
