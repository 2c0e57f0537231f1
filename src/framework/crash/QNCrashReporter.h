#pragma once

#include "framework/support/QNSupportLog.h"

#include "platform/bundle/Bundle.h"
#include "platform/loop/Timer.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>

#include <functional>
#include <memory>
#include <optional>

class CrashReporterWindow;

namespace platform {
class UserDefaults;
}

/// Looks for crash reports that are new, once, and if there are any, offers to send them to the
/// maker's server, or to save them where there is none. Each report is offered at most once,
/// whatever the user does with it, and for a day at most. Main thread only; the looking is done on
/// another.
class QNCrashReporter final : public QObject {
    Q_OBJECT

  public:
    struct Dependencies {
        platform::UserDefaults& defaults;
        /// The paths of the reports of programs of these names; called on some thread.
        std::function<std::optional<QStringList>(const QStringList& names)> crashReports;
        SupportSources sources = SupportSources::ofTheSystem();
        platform::Bundle bundle = platform::Bundle::main();
        /// Lets the user look at all that would be sent, above the window. Null: they cannot.
        std::function<void(QNSupportLog& report, QWidget& window)> showContent = nullptr;
        /// Asks where to save a file of that name; empty for nowhere.
        std::function<QString(QWidget* parent, const QString& name)> chooseFile = &askForFile;
    };

    /// Tags of buttons.
    enum Button : int { cancel = 0, send = 1 };

    /// Needs a run loop of this thread.
    explicit QNCrashReporter(Dependencies dependencies);
    ~QNCrashReporter() override;

    /// What is sent; who makes the reporter adds programs and files to it before the first call of
    /// showWindowIfNewCrashReportsExists().
    [[nodiscard]] QNSupportLog& supportLog() noexcept { return supportLog_; }
    [[nodiscard]] CrashReporterWindow& window() noexcept { return *window_; }

    /// Looks for reports and shows the window if there are new ones. It may be called again.
    void showWindowIfNewCrashReportsExists();

    /// Whether a report, a dictionary of its path and date, is to be offered.
    [[nodiscard]] bool isNewReport(const QVariantMap& report) const;

    /// Takes the text, address and comment that the window shows, and sends.
    void buttonAction(Button sender);

    /// Counts the reports as seen, and closes the window.
    void close();

    /// Whether it has looked; whether it shows the window.
    [[nodiscard]] bool hasLooked() const noexcept { return newCrashReports_.has_value(); }
    [[nodiscard]] bool isOffering() const;

  Q_SIGNALS:
    void closed();

  private:
    static QString askForFile(QWidget* parent, const QString& name);

    void awakeFromNib();
    void loadCrashReports();
    void takeCrashReports(const QVariantList& reports);
    void sendCrashReport();
    void sendingStatus(const QString& status, QNSupportLog::Stage stage);
    void saveCrashReport();
    void takeTexts();
    void showContent();
    void enableUI(bool isEnabled);
    void markAsSeen();

    const Dependencies dependencies_;
    QNSupportLog supportLog_;
    const bool hasServer_;
    QVariantList existingCrashReports_;
    std::optional<QVariantList> newCrashReports_; // nothing until they have been looked for
    bool isLooking_ = false;
    const std::unique_ptr<CrashReporterWindow> window_;
    platform::Timer closing_;
};
