#include "naming/ApplicationResolver.h"

#include "naming/ApplicationName.h"
#include "naming/ApplicationSearch.h"
#include "naming/DesktopEntries.h"
#include "naming/ProgramKinds.h"
#include "platform/base/MarkedText.h"

namespace {

/// Beyond that many processes, most of those that are kept have ended.
constexpr std::size_t mostKept = 1024;

/// Whether the result depends on the client's properties.
bool isByClient(NameEvidence evidence) noexcept {
    return evidence == NameEvidence::none || evidence >= NameEvidence::clientId;
}

ApplicationIdentity ofEntry(const DesktopEntry& entry, NameEvidence evidence) {
    ApplicationIdentity identity;
    identity.name = sanitizedName(entry.name);
    identity.entry = entry.id;
    identity.entryPath = entry.path;
    identity.icon = entry.icon;
    identity.evidence = evidence;
    return identity;
}

} // namespace

const char* describe(NameEvidence evidence) noexcept {
    switch (evidence) {
    case NameEvidence::none:
        return MARKED_TEXT("Texts", "Nothing is known about the program.");
    case NameEvidence::sandbox:
        return MARKED_TEXT("Texts", "The program runs in this application's sandbox.");
    case NameEvidence::program:
        return MARKED_TEXT("Texts", "This application starts the program.");
    case NameEvidence::launch:
        return MARKED_TEXT("Texts", "The desktop started the program as this application.");
    case NameEvidence::family:
        return MARKED_TEXT("Texts", "The program is a helper of this application.");
    case NameEvidence::unit:
        return MARKED_TEXT("Texts", "The desktop runs the program as this application.");
    case NameEvidence::game:
        return MARKED_TEXT("Texts", "The program is a game of this name.");
    case NameEvidence::speech:
        return MARKED_TEXT("Texts", "The program is part of the desktop's speech service.");
    case NameEvidence::clientId:
        return MARKED_TEXT("Texts", "The program identifies itself as this application.");
    case NameEvidence::clientIcon:
        return MARKED_TEXT("Texts", "The program uses this application's icon.");
    case NameEvidence::fileName:
        return MARKED_TEXT("Texts", "The program's file has this name.");
    case NameEvidence::clientName:
        return MARKED_TEXT("Texts", "The program uses this name for itself.");
    case NameEvidence::clientProgram:
        return MARKED_TEXT("Texts", "The program reports this file name.");
    }
    return "";
}

bool claimsPages(const ClientProperties& client) {
    return showsPages(client.binary) || client.name == "AudioIPC Server" ||
           client.name == "CubebUtils" || client.name == "Chromium";
}

const ApplicationIdentity& ApplicationResolver::resolve(pid_t process, std::uint64_t startTime,
                                                        const ClientProperties& client) {
    const std::uint64_t generation = entries_.generation();
    const auto found = known_.find(process);
    if (found != known_.end() && found->second.startTime == startTime &&
        found->second.generation == generation &&
        (!isByClient(found->second.identity.evidence) || found->second.client == client))
        return found->second.identity;
    if (known_.size() >= mostKept)
        known_.clear();
    const auto record = processes_.process(process);
    const bool isMeant = record && record->startTime == startTime;
    Known& known = known_[process];
    known = {startTime, generation, client,
             isMeant ? identifyApplication(*record, client, entries_, processes_)
                     : resolveClient(client)};
    return known.identity;
}

ApplicationIdentity ApplicationResolver::resolveSandbox(std::string_view application,
                                                        const ClientProperties& client) const {
    if (application.empty())
        return resolveClient(client);
    ProcessRecord process;
    process.sandbox = application;
    return identifyApplication(process, client, entries_, processes_);
}

ApplicationIdentity ApplicationResolver::resolveClient(const ClientProperties& client) const {
    ApplicationIdentity identity = namedByClient(client);
    identity.showsPages = claimsPages(client);
    return identity;
}

ApplicationIdentity ApplicationResolver::namedByClient(const ClientProperties& client) const {
    if (const DesktopEntry* const entry = entries_.find(client.id))
        return ofEntry(*entry, NameEvidence::clientId);
    const std::string icon = meaningfulIcon(client.icon);
    const DesktopEntry* entry = entries_.find(icon);
    if (entry == nullptr)
        entry = entries_.ofIcon(icon);
    if (entry != nullptr)
        return ofEntry(*entry, NameEvidence::clientIcon);
    const std::string binary = meaningfulName(client.binary);
    if (const auto found = entries_.ofName(binary); !found.empty())
        return ofEntry(*found.front(), NameEvidence::clientProgram);
    ApplicationIdentity identity;
    const auto answer = [&identity](const std::string& name, NameEvidence evidence) {
        if (identity.name.empty() && !name.empty()) {
            identity.name = sanitizedName(name);
            identity.evidence = evidence;
        }
    };
    answer(binary, NameEvidence::clientProgram);
    answer(meaningfulName(client.name), NameEvidence::clientName);
    answer(client.binary, NameEvidence::clientProgram);
    answer(client.name, NameEvidence::clientName);
    identity.icon = icon.empty() ? identity.name : icon;
    return identity;
}

ApplicationIdentity identifyApplication(const ProcessRecord& process,
                                        const ClientProperties& client,
                                        const DesktopEntries& entries,
                                        const ProcessView& processes) {
    return ApplicationSearch(process, client, entries, processes).answer();
}
