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

/// Identifies the owner of a stream: the process that plays it, its application, and the displayed
/// name. Watches the desktop entries for changes; does not poll. The run loop's thread only.
class ProgramIdentifier {
  public:
    /// Reads the desktop entries, in the languages of the environment. `changed` is called from the
    /// run loop, whose main queue must be served, and by setLanguage(), when names may have
    /// changed.
    ProgramIdentifier(platform::RunLoop& loop, std::function<void()> changed);
    ~ProgramIdentifier();
    ProgramIdentifier(const ProgramIdentifier&) = delete;
    ProgramIdentifier& operator=(const ProgramIdentifier&) = delete;

    /// Fills the caches, so that the first call is fast.
    void prepare() const { facts_.prepare(); }

    /// Sets the language of names, a locale's name; empty: those of the environment.
    void setLanguage(const std::string& language);

    /// The process that plays; nothing for streams of the sound server itself.
    [[nodiscard]] std::optional<StreamProcess> processOf(const StreamEvidence& evidence) const {
        return identifyStream(evidence, facts_);
    }

    /// The player's identity. Claims are used only without other evidence.
    StreamPlayer named(const StreamProcess& process, const ClientProperties& client);

    /// Identifies a known process again, with the current data.
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
    std::unique_ptr<DesktopEntriesWatch> watch_; // null if they cannot be watched
};

/// The program's properties as claimed in the evidence.
ClientProperties clientProperties(const StreamEvidence& evidence);
