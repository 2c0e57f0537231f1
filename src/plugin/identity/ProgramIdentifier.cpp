#include "plugin/identity/ProgramIdentifier.h"

#include "naming/ApplicationName.h"
#include "naming/DesktopEntriesWatch.h"
#include "platform/base/SystemLog.h"
#include "platform/base/Utf8.h"
#include "platform/language/MessageLanguages.h"
#include "platform/processes/ProcessInfo.h"
#include "plugin/identity/ProgramName.h"
#include "plugin/identity/PseudoPids.h"

#include <system_error>
#include <utility>

namespace {

std::string nameOf(const ApplicationIdentity& identity, const StreamProcess& process) {
    std::string name = identity.name;
    if (name.empty())
        name = sanitizedName(platform::commandName(static_cast<pid_t>(process.pid)).value_or(""));
    return name.empty() ? "unknown" : checkinName(std::move(name));
}

std::string fittingPath(const std::string& path) {
    return platform::truncatedUtf8(path, ProgramProcess::longestPath);
}

} // namespace

ClientProperties clientProperties(const StreamEvidence& evidence) {
    StreamClaims claims = mergedClaims(evidence);
    return {.name = std::move(claims.name),
            .id = std::move(claims.id),
            .icon = std::move(claims.icon),
            .binary = std::move(claims.binary)};
}

ProgramIdentifier::ProgramIdentifier(platform::RunLoop& loop, std::function<void()> changed)
    : changed_(std::move(changed))
    , entries_(DesktopEntries::usualFolders(),
               DesktopEnvironment::current(platform::messageLanguages()), files_)
    , resolver_(entries_, processes_) {
    watchEntries(loop);
}

ProgramIdentifier::~ProgramIdentifier() = default;

void ProgramIdentifier::watchEntries(platform::RunLoop& loop) {
    try {
        watch_ = std::make_unique<DesktopEntriesWatch>(loop, entries_, changed_);
    } catch (const std::system_error& error) { // no thread or descriptor is left
        platform::systemLog(platform::LogPriority::error,
                            "The desktop entries can't be watched: %s", error.what());
    }
}

void ProgramIdentifier::setLanguage(const std::string& language) {
    const std::uint64_t before = entries_.generation();
    entries_.setLanguages(language.empty() ? platform::messageLanguages() : language);
    if (entries_.generation() != before)
        changed_();
}

StreamPlayer ProgramIdentifier::named(const StreamProcess& process,
                                      const ClientProperties& client) {
    const auto pid = static_cast<pid_t>(process.pid);
    const ApplicationIdentity identity = process.startTime
                                             ? resolver_.resolve(pid, *process.startTime, client)
                                             : resolver_.resolveSandbox(process.sandbox, client);
    StreamPlayer player;
    player.process = {process.pid,
                      nameOf(identity, process),
                      "",
                      process.startTime,
                      process.proof,
                      identity.evidence,
                      identity.entryPath,
                      process.sandbox,
                      client,
                      identity.folders};
    player.main = mainProcess(identity, player.process);
    player.showsPages = identity.showsPages;
    // When the main process has ended, the others are independent.
    if (process.startTime)
        player.process.path =
            fittingPath(identity.mainProcess == pid ? identity.executable
                                                    : platform::executablePath(pid).value_or(""));
    return player;
}

/// The process that stands for the application, unless that is the same or has ended.
std::optional<ProgramProcess> ProgramIdentifier::mainProcess(const ApplicationIdentity& identity,
                                                             const ProgramProcess& process) {
    const pid_t pid = identity.mainProcess;
    const std::uint64_t startTime = identity.mainStartTime;
    if (pid == 0 || static_cast<std::uint32_t>(pid) == process.pid ||
        platform::processStartTime(pid) != startTime)
        return std::nullopt;
    ProgramProcess main = process;
    main.pid = static_cast<std::uint32_t>(pid);
    main.path = fittingPath(identity.executable);
    main.startTime = startTime;
    if (identity.evidence == NameEvidence::family) {
        // A process is not its own helper.
        const auto& own = resolver_.resolve(pid, startTime, process.client);
        if (own.name == identity.name) {
            main.evidence = own.evidence;
            main.entryPath = own.entryPath;
        }
    }
    return main;
}

StreamPlayer ProgramIdentifier::namedAgain(const ProgramProcess& process) {
    StreamProcess again{process.pid, process.startTime, process.sandbox, process.proof};
    if (PseudoPids::isOne(process.pid))
        again.pid = 0;
    return named(again, process.client);
}
