#pragma once

#include "naming/ApplicationResolver.h"
#include "naming/DesktopEntries.h"
#include "naming/ProcessView.h"
#include "naming/ProgramFiles.h"
#include "platform/files/PathsWatch.h"
#include "workspace/RegularApplications.h"

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <sys/types.h>
#include <vector>

namespace platform {
class DispatchQueue;
} // namespace platform

/// Finds the running applications, and identifies programs by name. The first call reads the
/// desktop entries, which takes a while; later calls read changed ones. One thread at a time, which
/// need not be the main one.
class ApplicationScan {
  public:
    struct Environment {
        std::vector<std::string> folders; ///< of desktop entries, in the order of search
        DesktopEnvironment desktop;
        SessionOfUser session;
    };

    /// For this machine, user and session, with names in the message language. Reads the
    /// environment.
    [[nodiscard]] static std::shared_ptr<ApplicationScan> live();

    explicit ApplicationScan(Environment environment,
                             std::unique_ptr<ProcessView> processes = nullptr);

    /// Watches the desktop entries from now on: when they may have changed, `changed` is called on
    /// the queue, which must be the one on which this object is used. It is called again only after
    /// the next running(), which reads them.
    void watchEntries(std::shared_ptr<platform::DispatchQueue> queue,
                      std::function<void()> changed);

    /// The regular applications. A process in `withWindows` is never taken for a service. For our
    /// own application, this process is the main process.
    std::vector<ApplicationIdentity> running(const std::set<pid_t>& withWindows);

    /// Identifies a program that the audio plug-in has named. If the plug-in named it after its
    /// sound client, at least the desktop entry of that name is found.
    ApplicationIdentity identify(pid_t process, const std::string& name,
                                 const std::string& executable);

  private:
    void prepare();
    void refresh();
    void standForOurselves(std::vector<ApplicationIdentity>& applications) const;

    const Environment environment_;
    const ProgramFiles files_;
    const std::unique_ptr<ProcessView> processes_;
    std::optional<DesktopEntries> entries_; // from the first call on
    std::optional<ApplicationResolver> resolver_;
    std::optional<platform::PathsWatch> watch_;
};
