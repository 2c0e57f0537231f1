#include "naming/DesktopEntries.h"

#include "naming/ApplicationName.h"
#include "naming/ProgramFiles.h"
#include "naming/ProgramKinds.h"
#include "platform/base/Directories.h"
#include "platform/files/PathsWatch.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <dirent.h>
#include <memory>
#include <set>
#include <sys/stat.h>
#include <utility>

namespace {

constexpr std::string_view ending = ".desktop";

std::string lowered(std::string_view text) {
    std::string result(text);
    std::ranges::transform(result, result.begin(), [](unsigned char each) {
        return static_cast<char>(std::tolower(each));
    });
    return result;
}

std::string_view withoutEnding(std::string_view id) {
    return id.ends_with(ending) ? id.substr(0, id.size() - ending.size()) : id;
}

void addFolder(std::vector<std::string>& folders, std::string dataFolder) {
    if (!dataFolder.starts_with('/'))
        return;
    while (dataFolder.ends_with('/'))
        dataFolder.pop_back();
    dataFolder += "/applications";
    if (std::ranges::find(folders, dataFolder) == folders.end())
        folders.push_back(std::move(dataFolder));
}

/// Names in the folder; none of a folder that cannot be read.
std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    const std::unique_ptr<DIR, int (*)(DIR*)> open(::opendir(folder.c_str()), &::closedir);
    while (const dirent* const entry = open ? ::readdir(open.get()) : nullptr) {
        if (entry->d_name[0] != '.')
            names.emplace_back(entry->d_name);
    }
    std::ranges::sort(names);
    return names;
}

} // namespace

bool DesktopEntries::Stamp::operator==(const Stamp& other) const noexcept {
    return device == other.device && number == other.number && size == other.size &&
           written.tv_sec == other.written.tv_sec && written.tv_nsec == other.written.tv_nsec;
}

std::vector<std::string> DesktopEntries::usualFolders() {
    std::vector<std::string> folders;
    addFolder(folders, platform::applicationSupportDirectory(platform::Domain::user));
    const char* const variable = std::getenv("XDG_DATA_DIRS");
    std::string_view rest = variable != nullptr ? variable : "";
    while (!rest.empty()) {
        const std::string_view folder = rest.substr(0, rest.find(':'));
        addFolder(folders, std::string(folder));
        rest.remove_prefix(std::min(folder.size() + 1, rest.size()));
    }
    addFolder(folders, "/usr/local/share");
    addFolder(folders, "/usr/share");
    addFolder(folders, platform::applicationSupportDirectory(platform::Domain::user) +
                           "/flatpak/exports/share");
    addFolder(folders, "/var/lib/flatpak/exports/share");
    addFolder(folders, "/var/lib/snapd/desktop");
    return folders;
}

DesktopEntries::DesktopEntries(std::vector<std::string> folders, DesktopEnvironment environment,
                               const ProgramFiles& files)
    : folders_(std::move(folders)), environment_(std::move(environment)), files_(files) {
    refresh();
}

bool DesktopEntries::refresh() {
    for (auto& [path, file] : known_)
        file.isThere = false;
    subfolders_.clear();
    bool changed = false;
    for (const std::string& folder : folders_)
        changed |= scan(folder, {});
    changed |= std::erase_if(known_, [](const auto& each) { return !each.second.isThere; }) != 0;
    if (changed)
        rebuild();
    return changed;
}

bool DesktopEntries::refresh(platform::PathsWatch& watch) {
    bool isDifferent = refresh();
    if (!watch.isDue())
        return isDifferent;
    // What appears before it is watched is only seen by looking again.
    while (watch.follow(readPaths()))
        isDifferent |= refresh();
    return isDifferent;
}

std::vector<std::string> DesktopEntries::readPaths() const {
    std::vector<std::string> paths = subfolders_;
    for (const auto& [path, file] : known_)
        paths.push_back(path);
    return paths;
}

void DesktopEntries::setLanguages(const std::string& languages) {
    if (languages == environment_.languages)
        return;
    environment_.languages = languages;
    known_.clear();
    refresh();
}

bool DesktopEntries::scan(const std::string& path, const std::string& prefix) {
    constexpr std::size_t longestPrefix = 256; // links may go round in circles
    subfolders_.push_back(path);
    bool changed = false;
    for (const std::string& name : namesIn(path)) {
        const std::string filePath = std::string(path).append("/").append(name);
        struct stat status {};
        if (::stat(filePath.c_str(), &status) != 0)
            continue;
        if (S_ISDIR(status.st_mode) && prefix.size() < longestPrefix) {
            changed |= scan(filePath, prefix + name + "-");
            continue;
        }
        if (!S_ISREG(status.st_mode) || !name.ends_with(ending))
            continue;
        const Stamp stamp{status.st_dev, status.st_ino, status.st_size, status.st_mtim};
        const auto [place, isNew] = known_.try_emplace(filePath);
        File& file = place->second;
        file.isThere = true;
        if (!isNew && file.stamp == stamp)
            continue;
        changed = true;
        file.stamp = stamp;
        file.id = prefix + std::string(withoutEnding(name));
        file.entry = readDesktopEntry(filePath, file.id, environment_, files_);
    }
    return changed;
}

void DesktopEntries::rebuild() {
    ++generation_;
    entries_.clear();
    byId_.clear();
    for (Index* const each :
         {&byProgram_, &byFolder_, &byName_, &byWindow_, &bySandbox_, &byGame_, &byIcon_})
        each->clear();
    std::set<std::string_view> taken;
    for (const std::string& folder : folders_) {
        const std::string inside = folder + "/";
        for (auto file = known_.lower_bound(inside);
             file != known_.end() && file->first.starts_with(inside); ++file) {
            if (taken.insert(file->second.id).second && file->second.entry)
                entries_.push_back(&*file->second.entry);
        }
    }
    for (const DesktopEntry* const entry : entries_)
        index(*entry);
}

void DesktopEntries::index(const DesktopEntry& entry) {
    const auto add = [&entry](Index& index, std::string key) {
        if (key.empty())
            return;
        Found& found = index[std::move(key)];
        if (found.empty() || found.back() != &entry)
            found.push_back(&entry);
    };
    byId_.emplace(entry.id, &entry);
    add(byWindow_, lowered(entry.windowClass));
    add(bySandbox_, entry.flatpak);
    add(bySandbox_, entry.snap);
    add(byGame_, entry.command.game);
    add(byIcon_, entry.icon);
    if (entry.command.isRequest || !entry.command.sandbox.empty())
        return; // the program belongs to another application
    const std::string& located = entry.command.isInterpreted ? entry.script : entry.program;
    add(byProgram_, located);
    add(byFolder_, packageFolder(located));
    const std::string_view name = fileName(entry.command.subject());
    add(byName_, std::string(name));
    add(byName_, std::string(name.substr(0, name.rfind('.')))); // of a script
    add(byName_, entry.id);
}

DesktopEntries::Found DesktopEntries::in(const Index& index, std::string_view key) {
    const auto found = index.find(key);
    return found != index.end() ? found->second : Found();
}

const DesktopEntry* DesktopEntries::find(std::string_view id) const {
    const auto found = byId_.find(withoutEnding(id));
    return found != byId_.end() ? found->second : nullptr;
}

const DesktopEntry* DesktopEntries::ofFile(std::string_view path) const {
    const auto file = known_.find(std::string(path));
    if (file != known_.end())
        return find(file->second.id);
    // A desktop may name the file in a folder that we do not know, with the same id.
    return find(fileName(path));
}

DesktopEntries::Found DesktopEntries::ofProgram(std::string_view path) const {
    Found found = in(byProgram_, path);
    return found.empty() ? in(byProgram_, files_.resolved(std::string(path))) : found;
}

DesktopEntries::Found DesktopEntries::ofFolder(std::string_view path) const {
    for (std::string_view folder = folderName(path); !folder.empty(); folder = folderName(folder)) {
        if (Found found = in(byFolder_, folder); !found.empty())
            return found;
    }
    return {};
}

DesktopEntries::Found DesktopEntries::ofName(std::string_view name) const {
    return in(byName_, name);
}

const DesktopEntry* DesktopEntries::called(std::string_view name) const {
    const auto found = std::ranges::find_if(
        entries_, [name](const DesktopEntry* each) { return sanitizedName(each->name) == name; });
    return found != entries_.end() ? *found : nullptr;
}

DesktopEntries::Found DesktopEntries::ofWindow(std::string_view application) const {
    return in(byWindow_, lowered(application));
}

DesktopEntries::Found DesktopEntries::ofSandbox(std::string_view application) const {
    Found found = in(bySandbox_, application);
    // The entry with the application's name is the application, the others are its parts.
    if (const DesktopEntry* const named = find(application))
        found.insert(found.begin(), named);
    return found;
}

const DesktopEntry* DesktopEntries::ofGame(std::string_view number) const {
    const Found found = in(byGame_, number);
    return found.empty() ? nullptr : found.front();
}

const DesktopEntry* DesktopEntries::ofIcon(std::string_view icon) const {
    const Found found = in(byIcon_, icon);
    return found.size() == 1 ? found.front() : nullptr;
}
