#include "workspace/RegularApplications.h"

#include "naming/DesktopEntries.h"
#include "naming/ProgramKinds.h"
#include "platform/processes/SystemdUnit.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <optional>
#include <set>
#include <unistd.h>
#include <utility>

namespace {

/// Asks for each process once.
class Snapshot final : public ProcessView {
  public:
    explicit Snapshot(const ProcessView& source) : source_(source) {}

    std::optional<ProcessRecord> process(pid_t pid) const override {
        const auto known = known_.find(pid);
        return known != known_.end() ? known->second
                                     : known_.emplace(pid, source_.process(pid)).first->second;
    }
    std::vector<pid_t> processesOf(uid_t user) const override { return source_.processesOf(user); }

  private:
    const ProcessView& source_;
    mutable std::map<pid_t, std::optional<ProcessRecord>> known_;
};

/// Whether the process waits in the background for work.
bool isService(const ProcessRecord& process) {
    constexpr std::string_view marks[] = {"--gapplication-service", "--daemon", "--daemonize",
                                          "--service"};
    return process.windows.empty() &&
           std::ranges::any_of(process.arguments, [&marks](const std::string& word) {
               return std::ranges::find(marks, word) != std::end(marks);
           });
}

bool isOfSession(const ProcessRecord& process, const SessionOfUser& session) {
    const std::string own = platform::loginSession(process.controlGroups);
    return process.user == session.user &&
           (own.empty() || session.session.empty() || own == session.session);
}

/// Whether the evidence is the process's own.
bool isItself(NameEvidence evidence) {
    return evidence != NameEvidence::none && evidence < NameEvidence::clientId &&
           evidence != NameEvidence::family;
}

} // namespace

SessionOfUser SessionOfUser::current() {
    const char* const session = std::getenv("XDG_SESSION_ID");
    return {::geteuid(), session != nullptr ? session : ""};
}

std::vector<ApplicationIdentity> regularApplications(const DesktopEntries& entries,
                                                     const ProcessView& processes,
                                                     const SessionOfUser& session) {
    const Snapshot snapshot(processes);
    std::vector<ProcessRecord> records;
    for (const pid_t pid : snapshot.processesOf(session.user)) {
        auto record = snapshot.process(pid);
        if (record && !record->executable.empty() && isOfSession(*record, session))
            records.push_back(std::move(*record));
    }
    std::ranges::stable_sort(records, {}, &ProcessRecord::startTime);
    std::vector<ApplicationIdentity> applications;
    std::set<std::string> names;
    for (const ProcessRecord& record : records) {
        const ProgramKind kind = programKind(record.executable);
        if (kind == ProgramKind::shell || kind == ProgramKind::wrapper || isService(record))
            continue;
        ApplicationIdentity identity = identifyApplication(record, {}, entries, snapshot);
        const DesktopEntry* const entry = entries.find(identity.entry);
        if (entry != nullptr && entry->isShown && isItself(identity.evidence) &&
            names.insert(identity.name).second)
            applications.push_back(std::move(identity));
    }
    return applications;
}
