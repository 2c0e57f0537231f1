#pragma once

#include "framework/support/QNSupportLogStore.h"
#include "framework/support/SupportCollection.h"
#include "framework/support/SupportSources.h"

#include "platform/bundle/Bundle.h"

#include <QByteArray>
#include <QList>
#include <QPointer>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariantMap>
#include <QWidget>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QNUploaderProxy;

/// Collects a support report and sends it. A report with a crash report is a crash report.
///
/// Either of two ways:
///  1. generatePostDictionary() or submitWithHandler() collect and finish the report at once;
///  2. collectForReview() collects, reviewedEntries() shows what there is, setLeftOut() leaves some
///     of it out, and one of the two above finishes the report with what is left.
///
/// Nothing stops the collecting: what cannot be had is left out. Main thread only; the collecting
/// itself is done on others.
class QNSupportLog {
  public:
    /// The stages that a status handler hears of.
    enum Stage : unsigned { collecting = 1, sending = 2, accepted = 3, failed = 4 };

    /// Called on the main thread. Stages 3 and 4 have a null text, and are the last.
    using StatusHandler = std::function<void(const QString& text, Stage stage)>;
    using PostCallback = std::function<void(const QVariantMap& postDictionary)>;
    /// Adds files of the application; called on some thread.
    using StoreHandler = std::function<void(QNSupportLogStore& store)>;

    explicit QNSupportLog(SupportSources sources = SupportSources::ofTheSystem(),
                          platform::Bundle bundle = platform::Bundle::main());

    /// cancel()
    ~QNSupportLog();
    QNSupportLog(const QNSupportLog&) = delete;
    QNSupportLog& operator=(const QNSupportLog&) = delete;

    /// Written by the person, stored as they are but for blanks around them.
    [[nodiscard]] const QString& userEmail() const noexcept { return userEmail_; }
    void setUserEmail(const QString& email) { userEmail_ = email; }
    [[nodiscard]] const QString& userComment() const noexcept { return userComment_; }
    void setUserComment(const QString& comment) { userComment_ = comment; }

    [[nodiscard]] bool useFullSystemProfile() const noexcept { return useFullSystemProfile_; }
    void setUseFullSystemProfile(bool full) noexcept { useFullSystemProfile_ = full; }
    [[nodiscard]] bool useFullSystemLog() const noexcept { return useFullSystemLog_; }
    void setUseFullSystemLog(bool full) noexcept { useFullSystemLog_ = full; }
    [[nodiscard]] bool includeAppScreenshots() const noexcept { return includeAppScreenshots_; }
    void setIncludeAppScreenshots(bool include) noexcept { includeAppScreenshots_ = include; }
    void setWindowsToExcludeFromScreenshots(const QList<QWidget*>& windows);

    /// The programs whose log lines and samples are wanted; at first all of ours.
    [[nodiscard]] QSet<QString>& ancillaryProcesses() noexcept { return ancillaryProcesses_; }

    void setHandler(StoreHandler handler) { storeHandler_ = std::move(handler); }

    void addCrashReport(const QString& path) { crashReports_.append(path); }
    [[nodiscard]] bool isCrashReport() const noexcept { return !crashReports_.isEmpty(); }

    /// Makes the archive and calls back with the form for QNUploader: the archive, which is empty
    /// if it could not be written. Throws std::invalid_argument without a status handler.
    void generatePostDictionary(const StatusHandler& statusHandler, PostCallback callback);

    /// The same, and sends it to serverURL(). The server accepts it by the reply "true".
    void submitWithHandler(const StatusHandler& statusHandler);

    /// Collects what generatePostDictionary() would, for a person to look at.
    void collectForReview(const StatusHandler& statusHandler, std::function<void()> callback);
    [[nodiscard]] const std::vector<SupportEntry>& reviewedEntries() const noexcept;
    /// The names of reviewed entries that are not sent.
    [[nodiscard]] const QSet<QString>& leftOut() const noexcept { return leftOut_; }
    void setLeftOut(const QSet<QString>& names) { leftOut_ = names; }

    /// The information record as it would be stored now.
    [[nodiscard]] QByteArray infoRecord() const;
    static constexpr const char* infoName = "Info.xml";

    /// Stops collecting or sending. Nobody is called any more.
    void cancel();

    /// Where reports are sent: HOST or HOST:PORT under the key "SupportServer" of the bundle's
    /// information. Nothing if there is no server.
    [[nodiscard]] static std::optional<QUrl>
    serverURL(const platform::Bundle& bundle = platform::Bundle::main());

  private:
    using Collector = std::function<void(QNSupportLogStore& store)>;

    std::vector<Collector> collectors() const;
    void addScreenshots(std::vector<Collector>& collectors) const;
    void addSystemFacts(std::vector<Collector>& collectors) const;
    Collector reviewedCollector() const;
    std::function<QByteArray()> infoWriter(const QDateTime& date) const;
    SupportCollection::Plan begin(const StatusHandler& statusHandler);
    void send(const StatusHandler& statusHandler, const QVariantMap& postDictionary);

    const SupportSources sources_;
    const platform::Bundle bundle_;
    QString userEmail_;
    QString userComment_;
    bool useFullSystemProfile_ = false;
    bool useFullSystemLog_ = false;
    bool includeAppScreenshots_ = false;
    QSet<QString> ancillaryProcesses_;
    QList<QPointer<QWidget>> windowsToExcludeFromScreenshots_;
    StoreHandler storeHandler_;
    QStringList crashReports_;

    std::shared_ptr<Redactor> redactor_;
    std::shared_ptr<const std::vector<SupportEntry>> reviewed_; // null: there was no review
    QSet<QString> leftOut_;
    std::shared_ptr<SupportCollection> collection_; // that in progress
    std::shared_ptr<QNUploaderProxy> upload_;
};
