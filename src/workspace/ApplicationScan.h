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

/// Finds out which applications run, and what is known of a program by its name. Reads the desktop
/// entries at the first question, which takes its time, and those that have changed at each look.
/// One thread at a time, which need not be the main one.
class ApplicationScan {
  public:
    struct Environment {
        std::vector<std::string> folders; ///< of desktop entries, in the order of search
        DesktopEnvironment desktop;
        SessionOfUser session;
    };

    /// Of this machine, person and session, with names in the language of messages. Reads the
    /// environment.
    static std::shared_ptr<ApplicationScan> live();

    explicit ApplicationScan(Environment environment,
                             std::unique_ptr<ProcessView> processes = nullptr);

    /// Has running() follow the desktop entries from now on: when they may have changed, `changed`
    /// is called on the queue, which has to be the one where this object is used. The next
    /// running() reads them, and until then nothing is told again.
    void watchEntries(std::shared_ptr<platform::DispatchQueue> queue,
                      std::function<void()> changed);

    /// The regular applications. Of processes `withWindows` none is taken for a service. If this
    /// one is of an application that is listed, it is the main process.
    std::vector<ApplicationIdentity> running(const std::set<pid_t>& withWindows);

    /// What is known of a program that the audio plug-in has named. The plug-in may know it by what
    /// it has told the sound server; then there is at least the desktop entry of that name.
    ApplicationIdentity identify(pid_t process, const std::string& name,
                                 const std::string& executable);

  private:
    void prepare();
    void refresh();
    void standForOurselves(std::vector<ApplicationIdentity>& applications) const;

    const Environment environment_;
    const ProgramFiles files_;
    const std::unique_ptr<ProcessView> processes_;
    std::optional<DesktopEntries> entries_; // from the first question on
    std::optional<ApplicationResolver> resolver_;
    std::optional<platform::PathsWatch> watch_;
};
