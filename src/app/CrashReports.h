#pragma once

#include "framework/crash/QNCrashReporter.h"

#include "platform/bundle/Bundle.h"
#include "platform/defaults/UserDefaults.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

class CrashWatch;

/// The application's part in crash reports: makes reports of what dead programs have left, offers
/// those that are new, also while it runs, and obeys the preferences for both. Main thread only.
class CrashReports {
  public:
    struct Dependencies {
        platform::UserDefaults& defaults;
        QString logFile;       ///< goes with its backups into what is sent
        QStringList processes; ///< whose reports are wanted beside those of SupportSources
        SupportSources sources = SupportSources::ofTheSystem();
        platform::Bundle bundle = platform::Bundle::main();
    };

    explicit CrashReports(Dependencies dependencies);
    ~CrashReports();
    CrashReports(const CrashReports&) = delete;
    CrashReports& operator=(const CrashReports&) = delete;

    /// From now on, reports that appear are offered; at the next launch only if `offersExisting` is
    /// false: those that are there already.
    void begin(bool offersExisting);

    /// Where the plug-in leaves its own, if it runs in other surroundings.
    void addFolder(const QString& folder);

    /// Writes the report of a program with more rights, which a signal has ended. Returns at once.
    void reportSignal(const QString& program, int signal) const;

  private:
    void offer();
    void obeyPreferences() const;
    std::unique_ptr<QNCrashReporter> makeReporter();

    const Dependencies dependencies_;
    QStringList otherFolders_;
    bool isOfferDue_ = false; // there are more, and the window is still open
    std::unique_ptr<CrashWatch> watch_;
    std::unique_ptr<QNCrashReporter> reporter_; // of the last offer
    platform::DefaultsObservation writing_;
};
