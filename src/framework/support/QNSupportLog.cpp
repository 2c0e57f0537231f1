#include "framework/support/QNSupportLog.h"

#include "framework/application/ExceptionPlaces.h"
#include "framework/redaction/Redactor.h"
#include "framework/support/InfoRecord.h"
#include "framework/support/QNUploader.h"
#include "framework/support/SupportCollection.h"

#include "platform/base/ExceptionReport.h"
#include "platform/base/WallClock.h"
#include "platform/text/Format.h"
#include "platform/text/Texts.h"

#include <QApplication>
#include <QBuffer>
#include <QPixmap>

#include <stdexcept>
#include <utility>

using platform::formatted;

namespace {

constexpr double percent = 100;

QDateTime now() {
    const auto time = std::chrono::floor<std::chrono::milliseconds>(platform::WallClock::now());
    return QDateTime::fromMSecsSinceEpoch(time.time_since_epoch().count());
}

void check(const QNSupportLog::StatusHandler& statusHandler) {
    if (!statusHandler)
        throw std::invalid_argument("nil statusHandler");
}

QString screenshotName(QString title) {
    title.replace(QLatin1Char('/'), QLatin1Char('-')).replace(QLatin1Char(':'), QLatin1Char('-'));
    return formatted(QStringLiteral("Screenshots/%@.png"), title);
}

QByteArray pngOf(QWidget& window) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    const QPixmap picture = window.grab();
    return !picture.isNull() && picture.save(&buffer, "PNG") ? bytes : QByteArray();
}

} // namespace

QNSupportLog::QNSupportLog(SupportSources sources, platform::Bundle bundle)
    : sources_(std::move(sources)), bundle_(std::move(bundle)) {
    const QStringList names = sources_.allProcessNames();
    ancillaryProcesses_ = QSet<QString>(names.begin(), names.end());
}

QNSupportLog::~QNSupportLog() {
    cancel();
}

void QNSupportLog::setWindowsToExcludeFromScreenshots(const QList<QWidget*>& windows) {
    windowsToExcludeFromScreenshots_ = QList<QPointer<QWidget>>(windows.begin(), windows.end());
}

std::optional<QUrl> QNSupportLog::serverURL(const platform::Bundle& bundle) {
    const QString server = QString::fromStdString(bundle.text("SupportServer"));
    QUrl url(QStringLiteral("https://") + server + QStringLiteral("/resources/supportlogs/api.php"),
             QUrl::StrictMode);
    if (server.isEmpty() || !url.isValid() || url.host().isEmpty() ||
        url.host().endsWith(QLatin1String(".invalid")))
        return std::nullopt;
    if (QNUploader::isThisMachine(url.host()))
        url.setScheme(QStringLiteral("http"));
    return url;
}

const std::vector<SupportEntry>& QNSupportLog::reviewedEntries() const noexcept {
    static const std::vector<SupportEntry> none;
    return reviewed_ ? *reviewed_ : none;
}

std::function<QByteArray()> QNSupportLog::infoWriter(const QDateTime& date) const {
    const auto text = [this](const char* key) { return QString::fromStdString(bundle_.text(key)); };
    InfoRecord record;
    record.isCrashReport = isCrashReport();
    record.email = userEmail_.trimmed();
    record.comment = userComment_.trimmed();
    record.date = date;
    record.product = text("CFBundleName");
    record.version = text("CFBundleShortVersionString");
    record.build = text("CFBundleVersion");
    record.buildId = text("QNBuildIdentifier");
    record.buildTimestamp = text("QNBuildTimestamp");
    return [record, redactor = redactor_] { return record.xml(redactor.get()); };
}

QByteArray QNSupportLog::infoRecord() const {
    return infoWriter(now())();
}

void QNSupportLog::addScreenshots(std::vector<Collector>& collectors) const {
    for (QWidget* const window : QApplication::topLevelWidgets()) {
        const bool isWindow = window->isVisible() && window->windowType() != Qt::ToolTip &&
                              window->windowType() != Qt::Popup;
        if (!isWindow || windowsToExcludeFromScreenshots_.contains(window))
            continue;
        const QByteArray picture = pngOf(*window);
        const QString name = screenshotName(window->windowTitle());
        if (!picture.isEmpty())
            collectors.emplace_back([picture, name](auto& store) { store.addData(picture, name); });
    }
}

void QNSupportLog::addSystemFacts(std::vector<Collector>& collectors) const {
    const QStringList processes(ancillaryProcesses_.begin(), ancillaryProcesses_.end());
    collectors.emplace_back([sources = sources_, full = useFullSystemProfile_](auto& store) {
        if (const auto profile = sources.systemProfile(!full))
            store.addText(*profile, full ? QStringLiteral("System Profile.spx")
                                         : QStringLiteral("System Profile.txt"));
    });
    collectors.emplace_back([sources = sources_, processes, full = useFullSystemLog_](auto& store) {
        if (full) {
            const QString path = sources.systemLogPath();
            if (!path.isEmpty())
                store.addPath(path);
        } else if (const auto log = sources.systemLogForProcesses(processes)) {
            store.addText(*log, QStringLiteral("System Log (filtered).txt"));
        }
    });
    if (isCrashReport())
        return;
    for (const QString& process : processes) {
        collectors.emplace_back([sources = sources_, process](auto& store) {
            if (const auto sample = sources.sampleProcess(process))
                store.addText(*sample, formatted(QStringLiteral("Samples/%@.txt"), process));
        });
    }
}

std::vector<QNSupportLog::Collector> QNSupportLog::collectors() const {
    std::vector<Collector> collectors;
    if (includeAppScreenshots_)
        addScreenshots(collectors);
    if (storeHandler_) {
        collectors.emplace_back([handler = storeHandler_](auto& store) {
            platform::guarded(kExceptionInSupportHandler, [&] { handler(store); });
        });
    }
    collectors.emplace_back([reports = crashReports_](auto& store) {
        for (const QString& report : reports)
            store.addPath(report);
    });
    addSystemFacts(collectors);
    return collectors;
}

QNSupportLog::Collector QNSupportLog::reviewedCollector() const {
    return [entries = reviewed_, leftOut = leftOut_](QNSupportLogStore& store) {
        for (const SupportEntry& entry : *entries) {
            if (!leftOut.contains(entry.name))
                store.addUnchanged(entry.content, entry.name);
        }
    };
}

/// A plan without its end, once what was in progress has been cancelled.
SupportCollection::Plan QNSupportLog::begin(const StatusHandler& statusHandler) {
    check(statusHandler);
    cancel();
    statusHandler(Texts::tr("Collecting data…"), collecting);
    if (!reviewed_)
        redactor_ = std::make_shared<Redactor>();
    SupportCollection::Plan plan;
    plan.product = QString::fromStdString(bundle_.name());
    plan.date = now();
    plan.isCrashReport = isCrashReport();
    plan.redactor = redactor_;
    plan.knowsFacts = reviewed_ != nullptr;
    plan.collectors = reviewed_ ? std::vector<Collector>{reviewedCollector()} : collectors();
    plan.progress = [statusHandler](double fraction) {
        statusHandler(formatted(Texts::tr("Collecting data (%.0f%%)…"), fraction * percent),
                      collecting);
    };
    return plan;
}

void QNSupportLog::generatePostDictionary(const StatusHandler& statusHandler,
                                          PostCallback callback) {
    SupportCollection::Plan plan = begin(statusHandler);
    // Its counts are known once all others have finished.
    plan.last = [write = infoWriter(plan.date)](auto& store) {
        store.addUnchanged(write(), QLatin1String(infoName));
    };
    plan.done = [callback = std::move(callback)](const QVariantMap& form, auto) { callback(form); };
    collection_ = std::make_shared<SupportCollection>(std::move(plan));
    collection_->begin();
}

void QNSupportLog::collectForReview(const StatusHandler& statusHandler,
                                    std::function<void()> callback) {
    check(statusHandler);
    reviewed_.reset();
    SupportCollection::Plan plan = begin(statusHandler);
    plan.forReview = true;
    plan.done = [this, callback = std::move(callback)](const QVariantMap&, auto entries) {
        reviewed_ = std::make_shared<const std::vector<SupportEntry>>(std::move(entries));
        callback();
    };
    collection_ = std::make_shared<SupportCollection>(std::move(plan));
    collection_->begin();
}

void QNSupportLog::submitWithHandler(const StatusHandler& statusHandler) {
    check(statusHandler);
    generatePostDictionary(statusHandler, [this, statusHandler](const QVariantMap& form) {
        send(statusHandler, form);
    });
}

void QNSupportLog::send(const StatusHandler& statusHandler, const QVariantMap& postDictionary) {
    statusHandler(Texts::tr("Sending…"), sending);
    upload_ = QNUploader::uploadPostData(
        postDictionary, serverURL(bundle_).value_or(QUrl()),
        [statusHandler](double fraction) {
            statusHandler(formatted(Texts::tr("Sending (%.0f%%)…"), fraction * percent), sending);
        },
        [statusHandler](const std::optional<QByteArray>& reply) {
            statusHandler({}, reply && *reply == "true" ? accepted : failed);
        });
}

void QNSupportLog::cancel() {
    if (collection_)
        collection_->cancel();
    collection_.reset();
    if (upload_)
        upload_->cancelSilently();
    upload_.reset();
}
