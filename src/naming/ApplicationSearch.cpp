#include "naming/ApplicationSearch.h"

#include "naming/ApplicationName.h"
#include "naming/DesktopEntries.h"
#include "naming/DisambiguatedName.h"
#include "naming/UnitMainProcess.h"
#include "platform/language/PlainTexts.h"
#include "platform/processes/SystemdUnit.h"

#include <algorithm>
#include <tuple>

namespace {

using Found = DesktopEntries::Found;

constexpr int farthest = 32; // processes above one that are looked at

bool isInHome(std::string_view path) {
    return path.starts_with("/home/") || path.starts_with("/root/") || path.starts_with("/tmp/");
}

/// Whether the path is in a folder for program files, not for the user's files.
bool isHidden(std::string_view path) {
    return path.find("/.") != std::string_view::npos;
}

/// The path of the program's own file, as far as known.
const std::string& located(const ProgramCommand& command) {
    return command.script.starts_with('/') ? command.script : command.program;
}

/// Whether an entry that has only the name in common with a program can mean it. An executable that
/// lies elsewhere than the entry says is another version of it, or a part of another package. A
/// script may start anything, but one that the system has installed does not start what the user
/// has unpacked somewhere.
bool mayMean(const DesktopEntry& entry, const ProgramCommand& command) {
    const std::string& path = located(command);
    if (entry.program.empty() || entry.command.isInterpreted)
        return !entry.command.isRequest;
    if (entry.programIsScript)
        return isInHome(entry.program) || !isInHome(path) || isHidden(path);
    return packageFolder(entry.program).empty() && entry.program.starts_with("/usr/") &&
           path.starts_with("/usr/") && !entry.program.starts_with("/usr/local/") &&
           !path.starts_with("/usr/local/");
}

/// Of entries that all start the program the one that the process was started from, as far as that
/// can be told.
const DesktopEntry* bestOf(const Found& found, const ProcessRecord& process,
                           const DesktopEntry* launched) {
    const auto rank = [&](const DesktopEntry* entry) {
        const std::vector<std::string>& wanted = entry->command.arguments;
        const auto isGiven = [&process](const std::string& argument) {
            return std::ranges::find(process.arguments, argument) != process.arguments.end();
        };
        const auto given = std::ranges::count_if(wanted, isGiven);
        const auto missing = static_cast<std::ptrdiff_t>(wanted.size()) - given;
        return std::tuple(entry == launched, -missing, given, entry->isForPeople,
                          entry->id == fileName(entry->command.subject()));
    };
    const auto best = std::ranges::max_element(found, {}, rank);
    return best != found.end() ? *best : nullptr;
}

/// The name without the suffix for the program's role in its package.
std::string_view withoutRole(std::string_view name) {
    for (const std::string_view role : {"-server", "-gui", "-client", "-wrapped"}) {
        if (name.size() > role.size() && name.ends_with(role))
            return name.substr(0, name.size() - role.size());
    }
    return name;
}

bool isPartOfOther(const ProgramCommand& command) {
    // Chromium's and Electron's way.
    return std::ranges::any_of(command.arguments,
                               [](const auto& word) { return word.starts_with("--type="); });
}

/// Whether the process only does work for its parent.
bool isPassedOver(ProgramKind kind, const ProgramCommand& command, const ProcessRecord& process) {
    const bool runsScript = kind == ProgramKind::shell &&
                            (!command.script.empty() ||
                             std::ranges::find(process.arguments, "-c") != process.arguments.end());
    return kind == ProgramKind::wrapper || runsScript;
}

} // namespace

ApplicationSearch::ApplicationSearch(const ProcessRecord& process, const ClientProperties& client,
                                     const DesktopEntries& entries, const ProcessView& processes)
    : client_(client), entries_(entries), processes_(processes) {
    family_.push_back(look(process));
    line_.push_back(process.pid);
    climb();
}

ApplicationIdentity ApplicationSearch::answer() {
    const Member& main = family_.back();
    ApplicationIdentity identity;
    identity.mainProcess = main.process.pid;
    identity.mainStartTime = main.process.startTime;
    identity.executable =
        main.process.appImage.empty() ? main.process.executable : main.process.appImage;
    if (!answerBySpeech(identity) && !answerByEntry(identity) && !answerByGame(identity) &&
        !answerByClaim(identity))
        answerByLabel(identity);
    identity.name = sanitizedName(identity.name);
    identity.showsPages = isOfPages();
    return identity;
}

/// Of the process itself, since what a browser starts may be anything.
bool ApplicationSearch::isOfPages() const {
    const Member& member = family_.front();
    const auto isMark = [](const std::string& word) {
        return word == "--type=utility" || word == "--type=renderer" || word == "-contentproc";
    };
    return showsPages(member.process.executable) || showsPages(member.command.subject()) ||
           std::ranges::any_of(member.process.arguments, isMark) || claimsPages(client_);
}

ApplicationSearch::Member ApplicationSearch::look(ProcessRecord process) const {
    Member member;
    member.command = runningProgram(process);
    member.kind = programKind(process.executable);
    member.process = std::move(process);
    const auto have = [&member](const DesktopEntry* entry, NameEvidence evidence) {
        member.entry = entry;
        member.evidence = evidence;
        return entry != nullptr;
    };
    if (have(sandboxEntry(member), NameEvidence::sandbox) ||
        have(programEntry(member), NameEvidence::program))
        return member;
    if (!member.process.launchedEntry.empty())
        have(entries_.ofFile(member.process.launchedEntry), NameEvidence::launch);
    return member;
}

const DesktopEntry* ApplicationSearch::sandboxEntry(const Member& member) const {
    if (member.process.sandbox.empty() || !isOfCarrier(member))
        return nullptr;
    const Found found = entries_.ofSandbox(member.process.sandbox);
    if (found.empty() || !found.front()->snap.empty()) {
        const std::string part = platform::snapPart(member.process.controlGroups);
        const std::string name =
            member.process.sandbox.substr(member.process.sandbox.find('.') + 1);
        const auto rank = [&](const DesktopEntry* entry) {
            return std::tuple(entry->snapPart == part, entry->snapPart == name, entry->isForPeople);
        };
        const auto best = std::ranges::max_element(found, {}, rank);
        return best != found.end() ? *best : nullptr;
    }
    return found.front()->id == member.process.sandbox ? found.front()
                                                       : bestOf(found, member.process, nullptr);
}

/// Whether the sandbox's application is what the process belongs to: not when that is one that
/// starts others, such as a terminal, and the process is none of its own programs.
bool ApplicationSearch::isOfCarrier(const Member& member) const {
    const Found found = entries_.ofSandbox(member.process.sandbox);
    const bool carries =
        std::ranges::any_of(found, [](const DesktopEntry* each) { return each->startsOthers; });
    const std::string_view path = located(member.command);
    return !carries || path.starts_with("/app/") || path.starts_with("/snap/") ||
           member.kind == ProgramKind::webView || startsOthers(member.kind);
}

const DesktopEntry* ApplicationSearch::programEntry(const Member& member) const {
    const ProgramCommand& command = member.command;
    const DesktopEntry* const launched = entries_.ofFile(member.process.launchedEntry);
    const auto best = [&](const Found& found) { return bestOf(found, member.process, launched); };
    if (!member.process.appImage.empty()) {
        if (const DesktopEntry* const entry = best(entries_.ofProgram(member.process.appImage)))
            return entry;
    }
    if (command.isInterpreted && command.script.empty())
        return nullptr;
    const std::string& subject = command.subject();
    if (subject.starts_with('/')) {
        if (const DesktopEntry* const entry = best(entries_.ofProgram(subject)))
            return entry;
        if (const DesktopEntry* const entry = best(entries_.ofFolder(subject)))
            return entry;
    }
    return namedEntry(member);
}

const DesktopEntry* ApplicationSearch::namedEntry(const Member& member) const {
    const ProgramCommand& command = member.command;
    Found found = entries_.ofName(fileName(command.subject()));
    const std::string label = programLabel(command, member.process);
    if (found.empty())
        found = entries_.ofName(label);
    if (found.empty())
        found = entries_.ofName(withoutRole(label));
    const auto isOther = [&](const DesktopEntry* entry) { return !mayMean(*entry, command); };
    std::erase_if(found, isOther);
    for (const std::string_view name : {fileName(command.subject()), std::string_view(label)}) {
        if (!found.empty())
            break;
        // Toolkits call a program's windows like its file: so much is known of what a script
        // becomes. A plain program stays what it is, whatever else is called like its windows.
        found = entries_.ofWindow(name);
        std::erase_if(found, [&](const DesktopEntry* entry) {
            return isOther(entry) || !mayExecAnother(*entry);
        });
    }
    if (found.empty() && command.isInterpreted) {
        // A runtime of the program's own. What an editor runs with its own is the user's.
        found = entries_.ofFolder(command.program);
        std::erase_if(found, [](const DesktopEntry* entry) { return entry->startsOthers; });
    }
    return bestOf(found, member.process, entries_.ofFile(member.process.launchedEntry));
}

void ApplicationSearch::climb() {
    bool isOver = false; // the rest is only looked through for Steam's mark
    pid_t above = family_.back().process.parent;
    std::uint64_t start = family_.back().process.startTime;
    for (int i = 0; i < farthest && above > 1; ++i) {
        auto process = processes_.process(above);
        // A process is never older than its parent.
        if (!process || process->startTime > start)
            return;
        start = process->startTime;
        above = process->parent;
        for (const std::string& word : process->arguments) {
            constexpr std::string_view mark = "AppId=";
            if (game_.empty() && fileName(process->executable) == "reaper" &&
                word.starts_with(mark))
                game_ = word.substr(mark.size());
        }
        if (isOver)
            continue;
        Member parent = look(std::move(*process));
        const Member& child = family_.back();
        if (parent.process.sandbox == child.process.sandbox &&
            isPassedOver(parent.kind, parent.command, parent.process)) {
            line_.push_back(parent.process.pid);
            continue;
        }
        if (isFamily(child, parent)) {
            line_.push_back(parent.process.pid);
            family_.push_back(std::move(parent));
        } else {
            isOver = true;
            unitAbove_ = platform::systemdUnit(parent.process.controlGroups);
            if (std::ranges::any_of(family_, [](const Member& each) { return each.entry; }))
                return;
        }
    }
}

bool ApplicationSearch::isFamily(const Member& child, const Member& parent) const {
    const ProcessRecord& a = child.process;
    const ProcessRecord& b = parent.process;
    if (a.user != b.user || a.sandbox != b.sandbox)
        return false;
    if (child.entry != nullptr && parent.entry != nullptr && child.entry != parent.entry)
        return false;
    if (parent.kind == ProgramKind::shell || parent.kind == ProgramKind::session)
        return child.kind == parent.kind && a.executable == b.executable;
    if (!a.sandbox.empty() && child.evidence == NameEvidence::sandbox)
        return parent.evidence == NameEvidence::sandbox;
    if (child.kind == ProgramKind::webView)
        return true;
    if (parent.kind == ProgramKind::speech) // a module runs the voice that the user has chosen
        return child.kind != ProgramKind::speech && child.entry == nullptr;
    if (child.kind == ProgramKind::soundTool)
        return parent.entry != nullptr && !parent.entry->startsOthers && !startsOthers(parent.kind);
    if (!a.executable.empty() && a.executable == b.executable)
        return !child.command.isInterpreted || child.command.script.empty() ||
               child.command.script == parent.command.script;
    if (isPartOfOther(child.command) && parent.command.isInterpreted == child.command.isInterpreted)
        return isInFolder(a.executable, packageFolder(b.executable));
    // Runtimes of different programs may lie in one folder.
    const std::string& inner = child.command.subject();
    const std::string& outer = parent.command.subject();
    return isInFolder(inner, packageFolder(outer)) || isInFolder(outer, packageFolder(inner));
}

/// The entry of the unit that the desktop has made for the family, if the family is what it has
/// started in it.
const DesktopEntry* ApplicationSearch::unitEntry() const {
    const Member& main = family_.back();
    const std::string unit = platform::systemdUnit(main.process.controlGroups);
    if (unit.empty() || unit == unitAbove_ || startsOthers(main.kind))
        return nullptr;
    for (const std::string& id : platform::unitApplications(unit)) {
        const DesktopEntry* const entry = entries_.find(id);
        if (entry != nullptr)
            return !entry->startsOthers &&
                           isUnitMainProcess(unit, *entry, main.process, line_, processes_)
                       ? entry
                       : nullptr;
    }
    return nullptr;
}

bool ApplicationSearch::answerBySpeech(ApplicationIdentity& identity) const {
    const Member& main = family_.back();
    if (main.kind != ProgramKind::speech || !main.process.sandbox.empty())
        return false;
    identity.name = PlainTexts::tr(speechName, entries_.languages());
    identity.icon = "preferences-desktop-accessibility";
    identity.evidence = NameEvidence::speech;
    return true;
}

bool ApplicationSearch::answerByEntry(ApplicationIdentity& identity) const {
    for (const Member& member : family_) {
        const bool isItself = &member == &family_.front();
        if (member.entry != nullptr) {
            take(*member.entry, isItself ? member.evidence : NameEvidence::family, identity);
            return true;
        }
    }
    const std::string& sandbox = family_.front().process.sandbox;
    if (!sandbox.empty() && isOfCarrier(family_.front())) {
        identity.name = sandbox.substr(sandbox.rfind('.') + 1);
        identity.icon = sandbox;
        identity.evidence = NameEvidence::sandbox;
        return true;
    }
    const DesktopEntry* const entry = unitEntry();
    if (entry != nullptr)
        take(*entry, NameEvidence::unit, identity);
    return entry != nullptr;
}

bool ApplicationSearch::answerByGame(ApplicationIdentity& identity) const {
    if (const DesktopEntry* const entry = entries_.ofGame(game_)) {
        take(*entry, NameEvidence::game, identity);
        return true;
    }
    const ProgramCommand& command = family_.back().command;
    for (const std::string& path : {command.script, command.program}) {
        identity.name = gameFolder(path);
        if (!identity.name.empty())
            break;
    }
    if (identity.name.empty())
        return false;
    identity.evidence = NameEvidence::game;
    identity.icon = game_.empty() ? identity.name : "steam_icon_" + game_;
    return true;
}

bool ApplicationSearch::answerByClaim(ApplicationIdentity& identity) const {
    if (const DesktopEntry* const entry = entries_.find(client_.id)) {
        take(*entry, NameEvidence::clientId, identity);
        return true;
    }
    const std::string icon = meaningfulIcon(client_.icon);
    const DesktopEntry* entry = entries_.find(icon);
    if (entry == nullptr)
        entry = entries_.ofIcon(icon);
    if (entry != nullptr)
        take(*entry, NameEvidence::clientIcon, identity);
    return entry != nullptr;
}

void ApplicationSearch::answerByLabel(ApplicationIdentity& identity) const {
    const Member& main = family_.back();
    identity.name = linkName(main.command, main.process, entries_.files());
    if (identity.name.empty())
        identity.name = programLabel(main.command, main.process);
    identity.evidence = NameEvidence::fileName;
    const std::string& image = main.process.appImage;
    if (!identity.name.empty())
        identity.folders =
            distinguishingFolders(image.empty() ? main.command.subject() : image, identity.name);
    if (identity.name.empty()) {
        for (const std::string& claim : {client_.name, client_.binary}) {
            if (identity.name.empty())
                identity.name = meaningfulName(claim);
        }
        identity.evidence = NameEvidence::clientName;
    }
    if (identity.name.empty()) {
        identity.name = fileName(main.process.executable);
        identity.evidence = NameEvidence::fileName;
    }
    if (identity.name.empty())
        identity.evidence = NameEvidence::none;
    identity.icon = meaningfulIcon(client_.icon);
    if (identity.icon.empty())
        identity.icon = identity.name;
}

void ApplicationSearch::take(const DesktopEntry& entry, NameEvidence evidence,
                             ApplicationIdentity& identity) {
    identity.name = entry.name;
    identity.entry = entry.id;
    identity.entryPath = entry.path;
    identity.icon = entry.icon;
    identity.evidence = evidence;
}
