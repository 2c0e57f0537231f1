#pragma once

#include "platform/loop/Timer.h"
#include "platform/processes/ProcessInfo.h"
#include "workspace/ApplicationScan.h"
#include "workspace/ProgramIcons.h"
#include "workspace/UnitWatch.h"
#include "workspace/WindowList.h"
#include "workspace/Workspace.h"

#include <QDBusConnection>
#include <QHash>

#include <map>
#include <memory>
#include <vector>

namespace platform {
class DispatchQueue;
class RunLoop;
} // namespace platform

/// The workspace of the real desktop. It scans the processes, on its own queue, after events: from
/// systemd's user manager, from the window manager, from the kernel when a known application has
/// ended or a desktop entry has changed, or on request. It scans again a little later, since many
/// programs take a moment to start. It does not poll.
class DesktopWorkspace final : public Workspace {
  public:
    /// Starts the first scan. `loop` is the main thread's and serves the main queue; `bus` is the
    /// bus of systemd's user manager.
    DesktopWorkspace(platform::RunLoop& loop, std::shared_ptr<ApplicationScan> scan,
                     const QDBusConnection& bus);
    ~DesktopWorkspace() override;

    std::optional<QList<RunningApplication>> runningApplications() const override {
        return running_;
    }
    void lookAgain() override;
    QIcon iconForProgram(const ProgramReference& program) const override;
    QIcon iconForApplication(const QString& name) const override;
    QIcon genericApplicationIcon() const override;
    QString whyNamed(const ProgramReference& program) const override;
    void setTileColors(const TileColors& colors) override;

    /// Whether systemd reports changes.
    [[nodiscard]] bool hearsOfUnits() const noexcept { return units_.isListening(); }

  private:
    using Identities = std::vector<ApplicationIdentity>;
    using ByName = QHash<QString, ApplicationIdentity>;
    struct Identified {
        std::uint32_t pid = 0; // the pid that was asked about
        ApplicationIdentity identity;
        bool isOutdated = false;
    };
    using TakeAnswer = void (DesktopWorkspace::*)(const Identities&);

    void hear();
    void hearOfEntries();
    void look();
    void take(const Identities& running);
    bool outdate();
    void watchEnds();
    const ApplicationIdentity* findOrAsk(const ProgramReference& program) const;
    void askAbout(const ProgramReference& program) const;
    void identifyAsked();
    void takeIdentified(const Identities& identified);
    void inBackground(std::function<Identities(ApplicationScan&)> work, TakeAnswer answer);

    platform::RunLoop& loop_;
    const std::shared_ptr<ApplicationScan> scan_; // used on the queue
    const std::shared_ptr<platform::DispatchQueue> queue_;
    mutable ProgramIcons icons_;
    mutable QIcon bundledApplicationIcon_; // null before it is needed

    std::optional<QList<RunningApplication>> running_;
    ByName known_;                          // running applications
    QHash<QString, Identified> identified_; // other programs that were asked about
    mutable std::vector<ProgramReference> asked_;
    std::vector<ProgramReference> underway_; // requests in progress
    std::map<pid_t, std::unique_ptr<platform::ProcessWatch>> ends_;
    bool isLooking_ = false;
    bool hasNews_ = false;         // since the scan began
    bool haveEntriesNews_ = false; // that no scan has read
    bool isReadingNews_ = false;   // of entries
    platform::MonotonicClock::time_point nextLook_;

    platform::Timer soon_;
    platform::Timer later_;
    mutable platform::Timer asking_;
    const UnitWatch units_;
    const WindowList windows_;
    const std::shared_ptr<DesktopWorkspace*> self_; // null after destruction
};
