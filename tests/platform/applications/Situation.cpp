#include "Situation.h"

#include <algorithm>
#include <fstream>
#include <glib.h>
#include <stdexcept>

using platform::NameEvidence;
using platform::ProcessRecord;

namespace {

const std::map<std::string, NameEvidence> evidences{
    {"none", NameEvidence::none},
    {"sandbox", NameEvidence::sandbox},
    {"program", NameEvidence::program},
    {"launch", NameEvidence::launch},
    {"family", NameEvidence::family},
    {"unit", NameEvidence::unit},
    {"game", NameEvidence::game},
    {"client-id", NameEvidence::clientId},
    {"client-icon", NameEvidence::clientIcon},
    {"file-name", NameEvidence::fileName},
    {"client-name", NameEvidence::clientName},
    {"client-program", NameEvidence::clientProgram}};

std::vector<std::string> parts(const std::string& text, char separator) {
    std::vector<std::string> result;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find(separator, at), text.size());
        result.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return result;
}

} // namespace

/// Takes one file apart, group by group. Each key must be used, so that a slip of the pen shows.
class Situation::Reader {
  public:
    Reader(Situation& situation, const std::filesystem::path& path)
        : situation_(situation), path_(path), file_(g_key_file_new(), &g_key_file_unref) {
        if (g_key_file_load_from_file(file_.get(), path.c_str(), G_KEY_FILE_KEEP_TRANSLATIONS,
                                      nullptr) == FALSE)
            fail("cannot be read");
        gchar** const groups = g_key_file_get_groups(file_.get(), nullptr);
        const std::vector<std::string> names(groups, groups + g_strv_length(groups));
        g_strfreev(groups);
        for (const std::string& name : names)
            readGroup(name);
    }

  private:
    using Keys = std::map<std::string, std::string>;

    [[noreturn]] void fail(const std::string& reason) const {
        throw std::runtime_error(path_.string() + ": [" + group_ + "] " + reason);
    }

    Keys keysOf(const std::string& group) const {
        Keys values;
        gchar** const keys = g_key_file_get_keys(file_.get(), group.c_str(), nullptr, nullptr);
        for (gchar** key = keys; *key != nullptr; ++key) {
            gchar* const value = g_key_file_get_value(file_.get(), group.c_str(), *key, nullptr);
            values[*key] = value;
            g_free(value);
        }
        g_strfreev(keys);
        return values;
    }

    std::string take(const std::string& key, const std::string& otherwise = {}) {
        const auto found = keys_.find(key);
        if (found == keys_.end())
            return otherwise;
        std::string value = found->second;
        keys_.erase(found);
        return value;
    }

    pid_t takeNumber(const std::string& key, pid_t otherwise) {
        const std::string text = take(key);
        return text.empty() ? otherwise : std::stoi(text);
    }

    void readGroup(const std::string& name) {
        group_ = name;
        keys_ = keysOf(name);
        const std::string kind = name.substr(0, name.find(' '));
        const std::string rest = name.size() > kind.size() ? name.substr(kind.size() + 1) : "";
        if (kind == "situation")
            readSituation();
        else if (kind == "process")
            readProcess(std::stoi(rest));
        else if (kind == "entry")
            writeEntry(rest);
        else if (kind == "files")
            readFiles();
        else if (kind == "expect")
            readQuestion(rest);
        else if (kind == "running")
            situation_.running_ = parts(take("names"), ';');
        else
            fail("is no kind of group");
        if (!keys_.empty())
            fail("has the unknown key " + keys_.begin()->first);
    }

    void readSituation() {
        situation_.surroundings_.languages = take("language", situation_.surroundings_.languages);
        if (const std::string desktops = take("desktops"); !desktops.empty())
            situation_.surroundings_.desktops = parts(desktops, ';');
        if (take("about").empty())
            fail("does not say what it is about");
    }

    void readProcess(pid_t pid) {
        ProcessRecord record;
        record.pid = pid;
        record.parent = takeNumber("parent", 900);
        record.session = takeNumber("leader", 0);
        record.user = static_cast<uid_t>(takeNumber("user", Situation::user));
        record.startTime = static_cast<std::uint64_t>(takeNumber("start", pid));
        record.executable = take("exe");
        gint count = 0;
        gchar** words = nullptr;
        if (g_shell_parse_argv(take("command", record.executable).c_str(), &count, &words, nullptr))
            record.arguments.assign(words, words + count);
        g_strfreev(words);
        record.controlGroups = controlGroups();
        record.sandbox = take("sandbox");
        record.launchedEntry = take("launched");
        record.appImage = take("appimage");
        record.windows = parts(take("windows"), ';');
        if (!record.executable.empty() && !situation_.files_.scripts.contains(record.executable))
            situation_.files_.programs.insert(record.executable);
        situation_.processes_.records[pid] = record;
    }

    std::string controlGroups() {
        const std::string session = take("session");
        const std::string unit = take("unit");
        if (!session.empty())
            return "0::/user.slice/user-1000.slice/session-" + session + ".scope\n";
        return "0::/user.slice/user-1000.slice/user@1000.service/" +
               (unit.empty() ? "session.slice/desktop.service" : "app.slice/" + unit) + "\n";
    }

    /// The keys as they stand make a desktop entry's file.
    void writeEntry(const std::string& id) {
        const bool isUsers = id.starts_with("user/");
        const auto path =
            situation_.folder_.path() / ((isUsers ? id : "system/" + id) + ".desktop");
        std::filesystem::create_directories(path.parent_path());
        std::ofstream file(path);
        file << "[Desktop Entry]\n";
        if (!keys_.contains("Type"))
            file << "Type=Application\n";
        for (const auto& [key, value] : keys_)
            file << key << "=" << value << "\n";
        keys_.clear();
    }

    void readFiles() {
        for (const std::string& path : parts(take("programs"), ';'))
            situation_.files_.programs.insert(path);
        for (const std::string& path : parts(take("scripts"), ';'))
            situation_.files_.scripts.insert(path);
        for (const std::string& link : parts(take("links"), ';')) {
            const std::vector<std::string> ends = parts(link, '>');
            situation_.files_.links[ends.at(0)] = ends.at(1);
        }
    }

    void readQuestion(const std::string& title) {
        Question question;
        question.title = title;
        const bool isNumber =
            std::ranges::all_of(title, [](char c) { return c >= '0' && c <= '9'; });
        question.process = takeNumber("process", isNumber ? std::stoi(title) : 0);
        question.sandbox = take("sandbox");
        question.client = {take("client-name"), take("client-id"), take("client-icon"),
                           take("client-binary")};
        platform::ApplicationIdentity& expected = question.expected;
        expected.name = take("name");
        expected.mainProcess = takeNumber("pid", question.process);
        expected.executable = take("path");
        expected.entry = take("entry");
        expected.icon = take("icon");
        const auto evidence = evidences.find(take("evidence"));
        if (evidence == evidences.end() || expected.name.empty())
            fail("needs a name, and an evidence that there is");
        expected.evidence = evidence->second;
        situation_.questions_.push_back(question);
    }

    Situation& situation_;
    const std::filesystem::path path_;
    const std::unique_ptr<GKeyFile, decltype(&g_key_file_unref)> file_;
    std::string group_;
    Keys keys_;
};

Situation::Situation(const std::filesystem::path& session, const std::filesystem::path& file) {
    const Reader base(*this, session);
    const Reader own(*this, file);
    entries_ = std::make_unique<platform::DesktopEntries>(
        std::vector{(folder_.path() / "user").string(), (folder_.path() / "system").string()},
        surroundings_, files_);
}

Situation::Files::Files()
    : ProgramFiles({"/usr/local/bin", "/usr/bin", "/usr/games", "/snap/bin"}) {}

bool Situation::Files::isExecutable(const std::string& path) const {
    return programs.contains(path) || scripts.contains(path) || links.contains(path);
}

std::string Situation::Files::resolved(const std::string& path) const {
    const auto found = links.find(path);
    return found != links.end() ? resolved(found->second) : path;
}

bool Situation::Files::isScript(const std::string& path) const {
    return scripts.contains(path);
}

std::optional<ProcessRecord> Situation::Processes::process(pid_t pid) const {
    const auto found = records.find(pid);
    return found != records.end() ? std::optional(found->second) : std::nullopt;
}

std::optional<std::uint64_t> Situation::Processes::startTime(pid_t pid) const {
    const auto found = records.find(pid);
    return found != records.end() ? std::optional(found->second.startTime) : std::nullopt;
}

std::vector<pid_t> Situation::Processes::processesOf(uid_t user) const {
    std::vector<pid_t> processes;
    for (const auto& [pid, record] : records) {
        if (record.user == user)
            processes.push_back(pid);
    }
    return processes;
}
