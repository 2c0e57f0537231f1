#include "app/CrashReports.h"

#include "framework/crash/CrashFinisher.h"
#include "framework/crash/CrashReporterWindow.h"
#include "framework/crash/CrashWatch.h"
#include "framework/log/qnlog.h"
#include "framework/support/QNSupportLogStore.h"
#include "framework/support/QNSupportUtils.h"
#include "platform/crash/CrashFolder.h"
#include "platform/crash/CrashHandler.h"
#include "platform/loop/DispatchQueue.h"
#include "platform/window/BundleImage.h"
#include "settings/PreferenceKeys.h"
#include "ui/support/ContentWindow.h"

#include <QFile>

#include <cstdlib>

using platform::DispatchQueue;

namespace {

struct Freed {
    void operator()(void* memory) const noexcept { std::free(memory); }
};

/// The log and its numbered backups.
void addLogs(QNSupportLogStore& store, const QString& logFile) {
    if (QFile::exists(logFile))
        store.addPath(logFile);
    std::size_t count = 0;
    const std::unique_ptr<char*[], Freed> backups(
        qnlog_rotated_files(logFile.toUtf8().constData(), &count));
    for (std::size_t i = 0; i < count; ++i) {
        if (const std::unique_ptr<char, Freed> path(backups[i]); path)
            store.addPath(QFile::decodeName(path.get()));
    }
}

void showContent(QNSupportLog& report, QWidget& window) {
    (new ContentWindow(report, &window))->open();
}

} // namespace

CrashReports::CrashReports(Dependencies dependencies)
    : dependencies_(std::move(dependencies))
    , writing_(dependencies_.defaults.observe(PreferenceKeys::writeCrashReports,
                                              [this] { obeyPreferences(); })) {
    obeyPreferences();
    DispatchQueue::global()->async([] { platform::reserveCrashRoom(); });
}

CrashReports::~CrashReports() = default;

/// Programs look for that in the folder, since they do not all read the preferences.
void CrashReports::obeyPreferences() const {
    const bool isOn = dependencies_.defaults.boolean(PreferenceKeys::writeCrashReports);
    platform::setCrashWriting(platform::crashFolder(), isOn);
    for (const QString& folder : otherFolders_)
        platform::setCrashWriting(folder.toStdString(), isOn);
}

void CrashReports::begin(bool offersExisting) {
    using Existing = CrashWatch::Existing;
    std::vector<std::string> folders{platform::crashFolder(), platform::sharedCrashFolder()};
    for (const QString& folder : otherFolders_)
        folders.push_back(folder.toStdString());
    watch_ = std::make_unique<CrashWatch>(
        std::move(folders), offersExisting ? Existing::countAsNew : Existing::areKnown,
        [this] { offer(); });
}

void CrashReports::addFolder(const QString& folder) {
    if (folder.isEmpty() || folder.toStdString() == platform::crashFolder() ||
        otherFolders_.contains(folder))
        return;
    otherFolders_.append(folder);
    obeyPreferences();
    if (watch_)
        watch_->add(folder.toStdString());
}

std::unique_ptr<QNCrashReporter> CrashReports::makeReporter() {
    auto reporter = std::make_unique<QNCrashReporter>(QNCrashReporter::Dependencies{
        dependencies_.defaults,
        [others = otherFolders_](const QStringList& names) {
            return QNSupportUtils::crashReportsForProcesses(names, others);
        },
        dependencies_.sources, dependencies_.bundle, &showContent});
    reporter->window().setWindowIcon(platform::bundleIcon(QStringLiteral("tonvale")));
    for (const QString& process : dependencies_.processes)
        reporter->supportLog().ancillaryProcesses().insert(process);
    reporter->supportLog().setHandler(
        [logFile = dependencies_.logFile](QNSupportLogStore& store) { addLogs(store, logFile); });
    QObject::connect(reporter.get(), &QNCrashReporter::closed, reporter.get(), [this] {
        if (std::exchange(isOfferDue_, false))
            QMetaObject::invokeMethod(
                reporter_.get(), [this] { offer(); }, Qt::QueuedConnection);
    });
    return reporter;
}

/// Each has its own reporter, which looks once. What the open window does not show comes when it is
/// closed.
void CrashReports::offer() {
    isOfferDue_ = reporter_ && reporter_->isOffering();
    if (isOfferDue_ || !dependencies_.defaults.boolean(PreferenceKeys::offerCrashReports))
        return;
    if (reporter_)
        reporter_.release()->deleteLater(); // which may be calling
    reporter_ = makeReporter();
    reporter_->showWindowIfNewCrashReportsExists();
}

void CrashReports::reportSignal(const QString& program, int signal) const {
    const platform::CrashProgram crashed{.name = program.toStdString(),
                                         .version = dependencies_.bundle.version(),
                                         .build = dependencies_.bundle.text("QNBuildIdentifier")};
    DispatchQueue::global()->async([crashed, signal] {
        [[maybe_unused]] const bool isWritten =
            CrashFinisher(platform::crashFolder()).reportSignal(crashed, signal);
    });
}
