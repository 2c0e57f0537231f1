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

/// The workspace of the desktop that we run on. It looks at the processes, on a queue of its own,
/// when it hears of something: from systemd's manager of the person's session, from the window
/// manager, from the kernel when an application that it knows has ended or a desktop entry has
/// changed, or from whoever asks it to. It looks again a little later, since many programs need a
/// moment to become what they are. While nothing happens it does nothing.
class DesktopWorkspace final : public Workspace {
  public:
    /// Begins to look. `loop` is the main thread's and serves the main queue; `bus` is where
    /// systemd's manager may be.
    DesktopWorkspace(platform::RunLoop& loop, std::shared_ptr<ApplicationScan> scan,
                     const QDBusConnection& bus);
    ~DesktopWorkspace() override;

    std::optional<QList<RunningApplication>> runningApplications() const override {
        return running_;
    }
    void lookAgain() override;
    QIcon iconForProgram(const ProgramReference& program) const override;
    QIcon genericApplicationIcon() const override;
    QString whyNamed(const ProgramReference& program) const override;
    void setTileColors(const TileColors& colors) override;

    /// Whether systemd tells of changes.
    bool hearsOfUnits() const noexcept { return units_.isListening(); }

  private:
    using Identities = std::vector<ApplicationIdentity>;
    using ByName = QHash<QString, ApplicationIdentity>;
    struct Identified {
        std::uint32_t pid = 0; // that has been asked about
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

    std::optional<QList<RunningApplication>> running_;
    ByName known_;                          // what runs
    QHash<QString, Identified> identified_; // what else has been asked about
    mutable std::vector<ProgramReference> asked_;
    std::vector<ProgramReference> underway_; // of what has been asked
    std::map<pid_t, std::unique_ptr<platform::ProcessWatch>> ends_;
    bool isLooking_ = false;
    bool hasNews_ = false;         // since the look began
    bool haveEntriesNews_ = false; // that no look has read
    bool isReadingNews_ = false;   // of entries
    platform::MonotonicClock::time_point nextLook_;

    platform::Timer soon_;
    platform::Timer later_;
    mutable platform::Timer asking_;
    const UnitWatch units_;
    const WindowList windows_;
    const std::shared_ptr<DesktopWorkspace*> self_; // null after the destruction
};
