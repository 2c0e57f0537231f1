#include "naming/DesktopEntry.h"

#include "naming/ProgramFiles.h"
#include "naming/ProgramKinds.h"

#include <algorithm>
#include <cstdlib>
#include <glib.h>
#include <memory>
#include <utility>

namespace {

constexpr const char* group = G_KEY_FILE_DESKTOP_GROUP;

std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> parts;
    while (!text.empty()) {
        const std::string_view part = text.substr(0, text.find(separator));
        if (!part.empty())
            parts.emplace_back(part);
        text.remove_prefix(std::min(part.size() + 1, text.size()));
    }
    return parts;
}

/// The names under which a text for the language may stand, the closest first. The encoding does
/// not count; a hyphen, as the web writes languages, stands for the underscore.
std::vector<std::string> variantsOf(std::string language) {
    std::ranges::replace(language, '-', '_');
    const std::size_t at = language.find('@');
    const std::string modifier = at == std::string::npos ? "" : language.substr(at);
    const std::string local = language.substr(0, std::min(language.find('.'), at));
    const std::string plain = local.substr(0, local.find('_'));
    std::vector<std::string> variants;
    for (std::string each : {local + modifier, local, plain + modifier, plain}) {
        if (std::ranges::find(variants, each) == variants.end())
            variants.push_back(std::move(each));
    }
    return variants;
}

/// The main group of one file.
class EntryFile {
  public:
    explicit EntryFile(const std::string& path)
        : file_(g_key_file_new(), &g_key_file_unref)
        , isValid_(g_key_file_load_from_file(file_.get(), path.c_str(),
                                             G_KEY_FILE_KEEP_TRANSLATIONS, nullptr) != FALSE) {}

    bool isValid() const noexcept { return isValid_; }

    std::string text(const std::string& key) const {
        const std::unique_ptr<gchar, decltype(&g_free)> value(
            g_key_file_get_string(file_.get(), group, key.c_str(), nullptr), &g_free);
        return value ? value.get() : "";
    }

    bool isTrue(const char* key) const {
        return g_key_file_get_boolean(file_.get(), group, key, nullptr) != FALSE;
    }

    std::vector<std::string> list(const char* key) const { return split(text(key), ';'); }

    /// In the first of the languages that the file has; English is the text without a language.
    std::string localText(const std::string& key, const std::string& languages) const {
        for (const std::string& language : split(languages, ':')) {
            for (const std::string& variant : variantsOf(language)) {
                std::string found = text(std::string(key).append("[").append(variant).append("]"));
                if (!found.empty())
                    return found;
                if (variant == "en" || variant == "C")
                    return text(key);
            }
        }
        return text(key);
    }

  private:
    std::unique_ptr<GKeyFile, decltype(&g_key_file_unref)> file_;
    bool isValid_;
};

bool contains(const std::vector<std::string>& list, std::string_view text) {
    return std::ranges::find(list, text) != list.end();
}

bool isShownOn(const EntryFile& file, const std::vector<std::string>& desktops) {
    if (file.isTrue("NoDisplay"))
        return false;
    const std::vector<std::string> only = file.list("OnlyShowIn");
    const std::vector<std::string> never = file.list("NotShowIn");
    for (const std::string& desktop : desktops) {
        if (contains(only, desktop))
            return true;
        if (contains(never, desktop))
            return false;
    }
    return only.empty();
}

void readCommand(const EntryFile& file, const ProgramFiles& files, DesktopEntry& entry) {
    entry.command = startedProgram(commandWords(file.text("Exec")));
    const auto locate = [&files](const std::string& word) {
        const std::string found = files.find(word);
        return found.empty() ? std::string() : files.resolved(found);
    };
    entry.program = locate(entry.command.program);
    if (entry.program.empty() && entry.command.sandbox.empty() && !entry.command.isRequest)
        entry.program = locate(file.text("TryExec"));
    if (entry.command.script.starts_with('/'))
        entry.script = files.resolved(entry.command.script);
    entry.programIsScript = !entry.program.empty() && files.isScript(entry.program);
}

void readSandbox(const EntryFile& file, DesktopEntry& entry) {
    constexpr std::string_view mark = "snap.";
    const std::string& sandbox = entry.command.sandbox;
    entry.flatpak = file.text("X-Flatpak");
    if (sandbox.starts_with(mark)) {
        const std::size_t part = sandbox.find('.', mark.size());
        entry.snap = sandbox.substr(0, part);
        entry.snapPart = part == std::string::npos ? "" : sandbox.substr(part + 1);
    } else if (entry.flatpak.empty()) {
        entry.flatpak = sandbox;
    }
    if (const std::string name = file.text("X-SnapInstanceName"); !name.empty())
        entry.snap = std::string(mark) + name;
    if (const std::string part = file.text("X-SnapAppName"); !part.empty())
        entry.snapPart = part;
}

/// By what the entry says of itself, and by the name of its program or, of one in a sandbox, of its
/// id.
bool isStarterOfOthers(const EntryFile& file, const DesktopEntry& entry) {
    std::string name = entry.id.substr(entry.id.find_last_of("._") + 1);
    std::ranges::transform(name, name.begin(), g_ascii_tolower);
    const std::vector<std::string> categories = file.list("Categories");
    return startsOthers(programKind(entry.command.program)) || startsOthers(programKind(name)) ||
           std::ranges::any_of(categories, [](std::string_view category) {
               return category == "TerminalEmulator" || category == "TextEditor" ||
                      category == "IDE" || category == "FileManager";
           });
}

} // namespace

DesktopEnvironment DesktopEnvironment::current(std::string languages) {
    const char* const desktops = std::getenv("XDG_CURRENT_DESKTOP");
    return {std::move(languages), split(desktops != nullptr ? desktops : "", ':')};
}

std::optional<DesktopEntry> readDesktopEntry(const std::string& path, std::string id,
                                             const DesktopEnvironment& environment,
                                             const ProgramFiles& files) {
    const EntryFile file(path);
    if (!file.isValid() || file.text("Type") != "Application" || file.isTrue("Hidden"))
        return std::nullopt;
    const std::string needed = file.text("TryExec");
    if (!needed.empty() && files.find(needed).empty())
        return std::nullopt;
    DesktopEntry entry;
    entry.id = std::move(id);
    entry.path = path;
    entry.name = file.localText("Name", environment.languages);
    if (entry.name.empty())
        return std::nullopt;
    entry.icon = file.localText("Icon", environment.languages);
    entry.windowClass = file.text("StartupWMClass");
    entry.isForPeople = !file.isTrue("NoDisplay");
    entry.isShown = isShownOn(file, environment.desktops);
    readCommand(file, files, entry);
    readSandbox(file, entry);
    entry.startsOthers = isStarterOfOthers(file, entry);
    return entry;
}
