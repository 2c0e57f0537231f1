#include "framework/crash/QNCrashReporter.h"

#include "framework/crash/CrashReporterWindow.h"
#include "framework/support/QNSupportUtils.h"
#include "framework/support/SavedArchive.h"

#include "platform/base/WallClock.h"
#include "platform/defaults/UserDefaults.h"
#include "platform/loop/DispatchQueue.h"
#include "platform/loop/RunLoop.h"
#include "platform/text/Format.h"
#include "platform/text/Texts.h"
#include "platform/window/Alert.h"
#include "settings/PreferenceKeys.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QDateTime>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPlainTextEdit>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QStandardPaths>

#include <chrono>

using platform::formatted;

namespace {

const QString& pathKey() {
    static const QString key = QStringLiteral("QNReportPath");
    return key;
}

const QString& dateKey() {
    static const QString key = QStringLiteral("QNReportDate");
    return key;
}

/// Its files have the time of the crash. Whole seconds, as the preferences keep them.
QVariantMap recordOf(const QString& path) {
    const qint64 time = QFileInfo(path).lastModified().toSecsSinceEpoch();
    return {{pathKey(), path}, {dateKey(), QDateTime::fromSecsSinceEpoch(time, Qt::UTC)}};
}

qint64 secondsSince(const QDateTime& date) {
    const auto now = std::chrono::floor<std::chrono::seconds>(platform::WallClock::now());
    return now.time_since_epoch().count() - date.toSecsSinceEpoch();
}

/// "TonvalePlugin, 11/27/26 10:11 AM"
QString crashText(const QVariantMap& report) {
    const QString name = QFileInfo(report[pathKey()].toString()).fileName();
    const QDateTime date = report[dateKey()].toDateTime().toLocalTime();
    return formatted(QStringLiteral("%@, %@"), name.left(name.indexOf(QLatin1Char('_'))),
                     QLocale().toString(date, QLocale::ShortFormat));
}

QString suggestedName() {
    return formatted(QStringLiteral("%@-CrashReport-%@.xar"), QCoreApplication::applicationName(),
                     QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd-HHmm")));
}

} // namespace

QNCrashReporter::QNCrashReporter(Dependencies dependencies)
    : dependencies_(std::move(dependencies))
    , supportLog_(dependencies_.sources, dependencies_.bundle)
    , hasServer_(QNSupportLog::serverURL(dependencies_.bundle).has_value())
    , existingCrashReports_(dependencies_.defaults.list(PreferenceKeys::crashReports))
    , window_(std::make_unique<CrashReporterWindow>(hasServer_ ? Texts::tr("Send")
                                                               : Texts::tr("Save…")))
    , closing_(*platform::RunLoop::current(), [this] { close(); }) {
    awakeFromNib();
    supportLog_.setWindowsToExcludeFromScreenshots({window_.get()});
    connect(&window_->sendButton(), &QPushButton::clicked, this, [this] { buttonAction(send); });
    connect(&window_->cancelButton(), &QPushButton::clicked, this,
            [this] { buttonAction(cancel); });
    connect(&window_->contentButton(), &QPushButton::clicked, this, &QNCrashReporter::showContent);
    connect(window_.get(), &CrashReporterWindow::closeWanted, this, &QNCrashReporter::close);
}

QNCrashReporter::~QNCrashReporter() {
    supportLog_.cancel();
}

void QNCrashReporter::awakeFromNib() {
    QLabel& message = window_->messageTextField();
    message.setText(
        message.text().replace(QLatin1String("APP"), QCoreApplication::applicationName()));
    const QString email = dependencies_.defaults.text(PreferenceKeys::crashReportEmail);
    window_->emailField().setText(email.isEmpty() ? QNSupportUtils::userEmail().value_or(QString())
                                                  : email);
    window_->contentButton().setVisible(dependencies_.showContent != nullptr);
}

bool QNCrashReporter::isOffering() const {
    return window_->isVisible();
}

void QNCrashReporter::showWindowIfNewCrashReportsExists() {
    if (!newCrashReports_) {
        if (!isLooking_)
            loadCrashReports();
        return;
    }
    if (newCrashReports_->isEmpty() || isOffering())
        return;
    QStringList crashes;
    for (const QVariant& report : std::as_const(*newCrashReports_)) {
        supportLog_.addCrashReport(report.toMap()[pathKey()].toString());
        crashes.append(crashText(report.toMap()));
    }
    window_->setCrashes(crashes);
    window_->showCentred();
}

void QNCrashReporter::loadCrashReports() {
    isLooking_ = true;
    const auto& processes = supportLog_.ancillaryProcesses();
    platform::DispatchQueue::global()->async(
        [find = dependencies_.crashReports, names = QStringList(processes.begin(), processes.end()),
         reporter = QPointer<QNCrashReporter>(this)] {
            QVariantList reports;
            const auto paths = find(names);
            for (const QString& path : paths.value_or(QStringList()))
                reports.append(recordOf(path));
            platform::DispatchQueue::main()->async([reporter, reports] {
                if (reporter != nullptr)
                    reporter->takeCrashReports(reports);
            });
        });
}

void QNCrashReporter::takeCrashReports(const QVariantList& reports) {
    isLooking_ = false;
    newCrashReports_.emplace();
    for (const QVariant& report : reports) {
        if (isNewReport(report.toMap()))
            newCrashReports_->append(report);
    }
    showWindowIfNewCrashReportsExists();
}

bool QNCrashReporter::isNewReport(const QVariantMap& report) const {
    constexpr qint64 day = 86400;
    return secondsSince(report[dateKey()].toDateTime()) <= day &&
           !existingCrashReports_.contains(report);
}

void QNCrashReporter::takeTexts() {
    supportLog_.setUserEmail(window_->emailField().text());
    supportLog_.setUserComment(window_->commentsField().toPlainText());
}

void QNCrashReporter::buttonAction(Button sender) {
    if (sender == cancel) {
        close();
        return;
    }
    dependencies_.defaults.set(PreferenceKeys::crashReportEmail, window_->emailField().text());
    if (hasServer_)
        sendCrashReport();
    else
        saveCrashReport();
}

void QNCrashReporter::sendCrashReport() {
    enableUI(false);
    takeTexts();
    supportLog_.submitWithHandler(
        [this](const QString& status, QNSupportLog::Stage stage) { sendingStatus(status, stage); });
}

void QNCrashReporter::sendingStatus(const QString& status, QNSupportLog::Stage stage) {
    constexpr std::chrono::milliseconds thanking{1500};
    window_->statusField().setText(status);
    if (stage == QNSupportLog::accepted || stage == QNSupportLog::failed)
        window_->progressBar().hide();
    if (stage == QNSupportLog::accepted) {
        window_->statusField().setText(Texts::tr("Thank you!"));
        closing_.start(thanking);
    } else if (stage == QNSupportLog::failed) {
        enableUI(true);
        platform::Alert{.kind = platform::Alert::Kind::warning,
                        .title = Texts::tr("An error occurred while sending."),
                        .message = Texts::tr("Please try again."),
                        .defaultButton = Texts::tr("OK")}
            .showOn(*window_);
    }
}

void QNCrashReporter::saveCrashReport() {
    const QString file = dependencies_.chooseFile(window_.get(), suggestedName());
    if (file.isEmpty())
        return;
    enableUI(false);
    takeTexts();
    supportLog_.generatePostDictionary(
        [this](const QString& status, auto) { window_->statusField().setText(status); },
        [this, file](const QVariantMap& form) {
            enableUI(true);
            const SavedArchive saved = saveArchive(file, form);
            window_->statusField().setText(saved.status);
            if (saved.isSaved)
                markAsSeen();
        });
}

void QNCrashReporter::showContent() {
    takeTexts();
    dependencies_.showContent(supportLog_, *window_);
}

void QNCrashReporter::enableUI(bool isEnabled) {
    window_->cancelButton().setEnabled(isEnabled);
    window_->sendButton().setEnabled(isEnabled);
    window_->contentButton().setEnabled(isEnabled);
    window_->commentsField().setEnabled(isEnabled);
    window_->emailField().setEnabled(isEnabled);
    window_->progressBar().setVisible(!isEnabled);
}

void QNCrashReporter::markAsSeen() {
    for (const QVariant& report : newCrashReports_.value_or(QVariantList())) {
        if (!existingCrashReports_.contains(report))
            existingCrashReports_.append(report);
    }
    dependencies_.defaults.set(PreferenceKeys::crashReports, existingCrashReports_);
}

void QNCrashReporter::close() {
    supportLog_.cancel();
    closing_.stop();
    markAsSeen();
    if (window_->dontAskAgain().isChecked())
        dependencies_.defaults.set(PreferenceKeys::offerCrashReports, false);
    window_->hide();
    Q_EMIT closed();
}

QString QNCrashReporter::askForFile(QWidget* parent, const QString& name) {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return QFileDialog::getSaveFileName(parent, Texts::tr("Save Crash Report"),
                                        folder + QLatin1Char('/') + name);
}
