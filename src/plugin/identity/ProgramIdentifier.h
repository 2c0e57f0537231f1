#pragma once

#include "naming/ApplicationResolver.h"
#include "naming/DesktopEntries.h"
#include "naming/ProcessView.h"
#include "naming/ProgramFiles.h"
#include "plugin/identity/ProgramProcess.h"
#include "plugin/identity/StreamProcess.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

class DesktopEntriesWatch;

namespace platform {
class RunLoop;

} // namespace platform

/// Tells whose a stream is: which process plays it, which application that is, and what a person
/// calls that. Follows the desktop entries as they change; nothing runs meanwhile. The run loop's
/// thread only.
class ProgramIdentifier {
  public:
    /// Reads the desktop entries, in the languages of the environment. `changed` is called from the
    /// run loop, whose main queue must be served, and by setLanguage(), when a name may have become
    /// another.
    ProgramIdentifier(platform::RunLoop& loop, std::function<void()> changed);
    ~ProgramIdentifier();
    ProgramIdentifier(const ProgramIdentifier&) = delete;
    ProgramIdentifier& operator=(const ProgramIdentifier&) = delete;

    /// Takes the time now that the first question would take.
    void prepare() const { facts_.prepare(); }

    /// Has names in this language from now on, a locale's name; empty: those of the environment.
    void setLanguage(const std::string& language);

    /// The process that plays; nothing for what the sound server plays itself.
    std::optional<StreamProcess> processOf(const StreamEvidence& evidence) const {
        return identifyStream(evidence, facts_);
    }

    /// Who that is. The claims count only where nothing else tells.
    StreamPlayer named(const StreamProcess& process, const ClientProperties& client);

    /// The same for one that has been named before, by what is known now.
    StreamPlayer namedAgain(const ProgramProcess& process);

  private:
    void watchEntries(platform::RunLoop& loop);
    std::optional<ProgramProcess> mainProcess(const ApplicationIdentity& identity,
                                              const ProgramProcess& process);

    const std::function<void()> changed_;
    const StreamProcessFacts facts_;
    const ProgramFiles files_;
    const ProcessView processes_;
    DesktopEntries entries_;
    ApplicationResolver resolver_;
    std::unique_ptr<DesktopEntriesWatch> watch_; // null when they cannot be watched
};

/// What the evidence claims of the program.
ClientProperties clientProperties(const StreamEvidence& evidence);
