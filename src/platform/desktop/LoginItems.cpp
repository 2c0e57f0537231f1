#include "platform/desktop/LoginItems.h"

#include "platform/base/Directories.h"
#include "platform/bundle/Bundle.h"

#include <QSaveFile>

#include <glib.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>

namespace platform {

namespace {

namespace fs = std::filesystem;

constexpr const char* group = "Desktop Entry";
constexpr std::uintmax_t largestFile = 1U << 20U;

struct Freed {
    void operator()(GKeyFile* file) const noexcept { g_key_file_unref(file); }
    void operator()(char* text) const noexcept { g_free(text); }
    void operator()(char** texts) const noexcept { g_strfreev(texts); }
};

using KeyFile = std::unique_ptr<GKeyFile, Freed>;

/// Null if there is no such file, or none of this kind.
KeyFile readEntry(const fs::path& path) {
    std::error_code error;
    if (!fs::is_regular_file(path, error) || fs::file_size(path, error) > largestFile || error)
        return nullptr;
    KeyFile file(g_key_file_new());
    const bool isRead =
        g_key_file_load_from_file(file.get(), path.c_str(), G_KEY_FILE_NONE, nullptr) &&
        g_key_file_has_group(file.get(), group);
    return isRead ? std::move(file) : nullptr;
}

std::string textOf(const KeyFile& file, const char* key) {
    const std::unique_ptr<char, Freed> text(g_key_file_get_string(file.get(), group, key, nullptr));
    return text ? text.get() : "";
}

bool isSwitchedOff(const KeyFile& file) {
    return textOf(file, "Hidden") == "true" || textOf(file, "X-GNOME-Autostart-enabled") == "false";
}

/// The bundle that the program of a command lies in, else the program itself.
fs::path programOf(const std::string& command) {
    char** words = nullptr;
    if (g_shell_parse_argv(command.c_str(), nullptr, &words, nullptr) == FALSE)
        return {};
    const std::unique_ptr<char*, Freed> owned(words);
    std::string program = words[0];
    for (std::size_t at = 0; (at = program.find("%%", at)) != std::string::npos; ++at)
        program.erase(at, 1);
    const fs::path path = program;
    const fs::path contents = path.parent_path().parent_path();
    const bool isInBundle = path.parent_path().filename() == "Linux" &&
                            contents.filename() == "Contents" && contents.has_parent_path();
    return isInBundle ? contents.parent_path() : path;
}

/// An entry that was switched off may hold nothing but that; its file tells its name then.
QString nameOf(const KeyFile& file, const fs::path& path) {
    const std::string name = textOf(file, "Name");
    if (!name.empty())
        return QString::fromStdString(name);
    return QString::fromStdString(path.stem()).section(QLatin1Char('.'), -1);
}

/// By their files' names; the first folder that has a file counts.
void addEntries(const fs::path& folder, std::map<std::string, fs::path>& files) {
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; entry != end; entry.increment(error)) {
        if (entry->path().extension() == ".desktop")
            files.try_emplace(entry->path().filename(), entry->path());
    }
}

bool isSamePlace(const QString& one, const QString& other) {
    if (one.isEmpty() || other.isEmpty())
        return false;
    std::error_code error;
    const auto resolved = [&](const QString& path) {
        return fs::weakly_canonical(path.toStdString(), error);
    };
    return resolved(one) == resolved(other);
}

/// A path as a word of a command in an entry.
std::string commandWord(std::string_view path) {
    std::string word = "\"";
    for (const char each : path) {
        if (std::string_view("\"`$\\").find(each) != std::string_view::npos)
            word += '\\';
        if (each == '%')
            word += '%';
        word += each;
    }
    return word + '"';
}

QByteArray entryOf(const Bundle& bundle, const QString& required) {
    const KeyFile file(g_key_file_new());
    const auto set = [&](const char* key, const std::string& value) {
        g_key_file_set_string(file.get(), group, key, value.c_str());
    };
    const fs::path program = bundle.contents() / "Linux" / bundle.text("CFBundleExecutable");
    set("Type", "Application");
    set("Name", bundle.name());
    set("Exec", commandWord(program.native()));
    if (!required.isEmpty())
        set("TryExec", required.toStdString());
    set("NoDisplay", "true");
    set("Terminal", "false");
    set("X-GNOME-Autostart-enabled", "true");
    gsize size = 0;
    const std::unique_ptr<char, Freed> text(g_key_file_to_data(file.get(), &size, nullptr));
    return {text.get(), static_cast<qsizetype>(size)};
}

} // namespace

LoginItems::Folders LoginItems::usualFolders() {
    Folders folders;
    if (const std::string own = preferencesDirectory(); !own.empty())
        folders.own = fs::path(own) / "autostart";
    const char* const variable = std::getenv("XDG_CONFIG_DIRS");
    const QString all =
        QString::fromUtf8(variable != nullptr && *variable != '\0' ? variable : "/etc/xdg");
    for (const QString& each : all.split(QLatin1Char(':'), Qt::SkipEmptyParts)) {
        if (each.startsWith(QLatin1Char('/')))
            folders.system.push_back(fs::path(each.toStdString()) / "autostart");
    }
    return folders;
}

LoginItems::LoginItems(Folders folders, QString required)
    : folders_(std::move(folders)), required_(std::move(required)) {}

std::vector<LoginItem> LoginItems::all() const {
    std::map<std::string, fs::path> files;
    if (!folders_.own.empty())
        addEntries(folders_.own, files);
    for (const fs::path& folder : folders_.system)
        addEntries(folder, files);
    std::vector<LoginItem> items;
    for (const auto& [name, path] : files) {
        const KeyFile file = readEntry(path);
        if (file == nullptr)
            continue;
        items.push_back({.name = nameOf(file, path),
                         .program = QString::fromStdString(programOf(textOf(file, "Exec"))),
                         .required = QString::fromStdString(textOf(file, "TryExec")),
                         .file = path,
                         .isOwn = path.parent_path() == folders_.own,
                         .isSwitchedOff = isSwitchedOff(file)});
    }
    return items;
}

bool LoginItems::loginItemExists(const QString& name, const QString& URL,
                                 std::optional<LoginItem>* item) const {
    for (LoginItem& each : all()) {
        const bool isNamed = !name.isEmpty() && each.name.compare(name, Qt::CaseInsensitive) == 0;
        if (!isNamed && !isSamePlace(each.program, URL))
            continue;
        if (item != nullptr)
            *item = std::move(each);
        return true;
    }
    return false;
}

bool LoginItems::loginItemExists(const QString& name, const QString& URL) const {
    return loginItemExists(name, URL, nullptr);
}

bool LoginItems::isOutdated(const LoginItem& item) const {
    return item.isOwn && !item.isSwitchedOff && item.required != required_;
}

bool LoginItems::addToLoginItems(const QString& URL) {
    const fs::path contents = fs::path(URL.toStdString()) / "Contents";
    std::error_code error;
    if (folders_.own.empty() || !fs::is_regular_file(contents / "Info.plist", error))
        return false;
    const Bundle bundle(contents);
    if (bundle.identifier().empty() || bundle.text("CFBundleExecutable").empty() ||
        !makeDirectories(folders_.own, 0700))
        return false;
    QSaveFile file(QString::fromStdString(folders_.own / (bundle.identifier() + ".desktop")));
    return file.open(QIODevice::WriteOnly) && file.write(entryOf(bundle, required_)) >= 0 &&
           file.commit();
}

bool LoginItems::removeFromLoginItems(const QString& URL, const QString& name) {
    std::optional<LoginItem> item;
    if (!loginItemExists(name, URL, &item))
        return false;
    std::error_code error;
    return item->isSwitchedOff || (item->isOwn && fs::remove(item->file, error));
}

} // namespace platform
