#include "workspace/ApplicationScan.h"

#include "naming/ApplicationName.h"
#include "naming/DisambiguatedName.h"
#include "platform/base/SystemLog.h"
#include "platform/language/MessageLanguages.h"

#include <system_error>
#include <unistd.h>
#include <utility>

namespace {

/// Processes, some of which have windows that say nothing.
class WindowedProcesses final : public ProcessView {
  public:
    WindowedProcesses(const ProcessView& source, const std::set<pid_t>& withWindows)
        : source_(source), withWindows_(withWindows) {}

    std::optional<ProcessRecord> process(pid_t pid) const override {
        auto record = source_.process(pid);
        if (record && withWindows_.contains(pid))
            record->windows.emplace_back();
        return record;
    }
    std::optional<std::uint64_t> startTime(pid_t pid) const override {
        return source_.startTime(pid);
    }
    std::vector<pid_t> processesOf(uid_t user) const override { return source_.processesOf(user); }

  private:
    const ProcessView& source_;
    const std::set<pid_t>& withWindows_;
};

} // namespace

std::shared_ptr<ApplicationScan> ApplicationScan::live() {
    return std::make_shared<ApplicationScan>(Environment{
        DesktopEntries::usualFolders(), DesktopEnvironment::current(platform::messageLanguage()),
        SessionOfUser::current()});
}

ApplicationScan::ApplicationScan(Environment environment, std::unique_ptr<ProcessView> processes)
    : environment_(std::move(environment))
    , processes_(processes != nullptr ? std::move(processes) : std::make_unique<ProcessView>()) {}

std::vector<ApplicationIdentity> ApplicationScan::running(const std::set<pid_t>& withWindows) {
    prepare();
    refresh();
    auto applications = regularApplications(*entries_, WindowedProcesses(*processes_, withWindows),
                                            environment_.session);
    standForOurselves(applications);
    return applications;
}

/// A tool of our own that was there before us has our name, but the application is this process.
void ApplicationScan::standForOurselves(std::vector<ApplicationIdentity>& applications) const {
    const auto self = processes_->process(::getpid());
    if (!self)
        return;
    const std::string name = identifyApplication(*self, {}, *entries_, *processes_).name;
    for (ApplicationIdentity& each : applications) {
        if (each.name != name)
            continue;
        each.mainProcess = self->pid;
        each.mainStartTime = self->startTime;
        each.executable = self->executable;
    }
}

ApplicationIdentity ApplicationScan::identify(pid_t process, const std::string& name,
                                              const std::string& executable) {
    prepare();
    if (const auto start = processes_->startTime(process)) {
        resolver_->forget(process); // it may have executed another program
        const ApplicationIdentity& found = resolver_->resolve(process, *start);
        if (isDisambiguatedName(name, found.name, found.folders))
            return found;
    }
    ApplicationIdentity identity;
    identity.name = name;
    identity.mainProcess = process;
    identity.executable = executable;
    identity.evidence = NameEvidence::clientName;
    if (const DesktopEntry* const entry = entries_->called(name)) {
        identity.entry = entry->id;
        identity.entryPath = entry->path;
        identity.icon = entry->icon;
        identity.evidence = NameEvidence::clientId;
    }
    return identity;
}

void ApplicationScan::watchEntries(std::shared_ptr<platform::DispatchQueue> queue,
                                   std::function<void()> changed) {
    watch_.emplace(std::move(queue), std::move(changed));
}

void ApplicationScan::refresh() {
    if (!watch_) {
        entries_->refresh();
        return;
    }
    try {
        entries_->refresh(*watch_);
    } catch (const std::system_error& error) { // no thread or descriptor is left
        systemLog(platform::LogPriority::error, "The desktop entries can't be watched: %s",
                  error.what());
        watch_.reset();
    }
}

void ApplicationScan::prepare() {
    if (entries_)
        return;
    entries_.emplace(environment_.folders, environment_.desktop, files_);
    resolver_.emplace(*entries_, *processes_);
}
