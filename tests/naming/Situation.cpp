#include "Situation.h"

#include <algorithm>
#include <fstream>
#include <glib.h>
#include <iterator>
#include <stdexcept>

namespace {

const std::map<std::string, NameEvidence> evidences{
    {"none", NameEvidence::none},
    {"sandbox", NameEvidence::sandbox},
    {"program", NameEvidence::program},
    {"launch", NameEvidence::launch},
    {"family", NameEvidence::family},
    {"unit", NameEvidence::unit},
    {"game", NameEvidence::game},
    {"speech", NameEvidence::speech},
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
    using Keys = std::map<std::string, std::string>;

  public:
    explicit Reader(Situation& situation) : situation_(situation) {}

    void read(const std::filesystem::path& path) {
        path_ = path;
        std::ifstream file(path);
        std::vector<std::pair<std::string, Keys>> groups;
        for (std::string line; std::getline(file, line);) {
            const std::size_t equals = line.find('=');
            if (line.starts_with('['))
                groups.emplace_back(line.substr(1, line.size() - 2), Keys());
            else if (equals != std::string::npos && !line.starts_with('#'))
                groups.back().second[line.substr(0, equals)] = line.substr(equals + 1);
        }
        std::size_t known = 0;
        for (const char* const kind : {"situation", "files", "entry", "process", "expect"}) {
            for (const auto& [name, keys] : groups) {
                if (name.substr(0, name.find(' ')) != kind)
                    continue;
                ++known;
                group_ = name;
                keys_ = keys;
                readGroup(kind, name.substr(name.find(' ') + 1));
            }
        }
        if (known == 0 || known < groups.size())
            fail("is not all that there is, or nothing can be read");
    }

  private:
    [[noreturn]] void fail(const std::string& reason) const {
        throw std::runtime_error(path_.string() + ": [" + group_ + "] " + reason);
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

    void readGroup(const std::string& kind, const std::string& rest) {
        if (kind == "situation")
            readSituation();
        else if (kind == "files")
            readFiles();
        else if (kind == "entry")
            writeEntry(rest);
        else if (kind == "process")
            readProcess(std::stoi(rest));
        else
            readQuestion(rest, 0);
        if (!keys_.empty())
            fail("has the unknown key " + keys_.begin()->first);
    }

    void readSituation() {
        situation_.environment_.languages = take("language", situation_.environment_.languages);
        if (const std::string desktops = take("desktops"); !desktops.empty())
            situation_.environment_.desktops = parts(desktops, ';');
        std::ranges::copy(parts(take("running"), ';'), std::back_inserter(situation_.running_));
        if (take("about").empty())
            fail("does not say what it is about");
    }

    void readProcess(pid_t pid) {
        ProcessRecord record;
        record.pid = pid;
        record.parent = takeNumber("parent", 1000);
        record.session = takeNumber("leader", 0);
        record.user = static_cast<uid_t>(takeNumber("user", Situation::user));
        record.startTime = static_cast<std::uint64_t>(takeNumber("start", pid));
        record.executable = take("exe");
        gint count = 0;
        gchar** words = nullptr;
        if (g_shell_parse_argv(take("command", record.executable).c_str(), &count, &words, nullptr))
            record.arguments.assign(words, words + count);
        g_strfreev(words);
        const ProcessRecord parent =
            situation_.processes_.process(record.parent).value_or(ProcessRecord());
        record.controlGroups = controlGroups(parent);
        record.sandbox = take("sandbox", parent.sandbox);
        record.launchedEntry = take("launched");
        record.appImage = take("appimage");
        record.windows = parts(take("windows"), ';');
        if (!record.executable.empty() && !situation_.files_.scripts.contains(record.executable))
            situation_.files_.programs.insert(record.executable);
        situation_.processes_.records[pid] = record;
        if (keys_.contains("name"))
            readQuestion(std::to_string(pid), pid);
    }

    std::string controlGroups(const ProcessRecord& parent) {
        const std::string session = take("session");
        const std::string unit = take("unit");
        const std::string user = "0::/user.slice/user-1000.slice/";
        if (!session.empty())
            return user + "session-" + session + ".scope\n";
        if (!unit.empty())
            return user + "user@1000.service/app.slice/" + unit + "\n";
        return parent.controlGroups.empty()
                   ? user + "user@1000.service/session.slice/desktop.service\n"
                   : parent.controlGroups;
    }

    /// The keys as they stand make a desktop entry's file.
    void writeEntry(const std::string& place) {
        const bool isUsers = place.starts_with("user/");
        const auto path =
            situation_.folder_.path() / ((isUsers ? place : "system/" + place) + ".desktop");
        std::filesystem::create_directories(path.parent_path());
        std::string id = isUsers ? place.substr(place.find('/') + 1) : place;
        std::ranges::replace(id, '/', '-');
        icons_[id] = keys_.try_emplace("Icon", id).first->second;
        std::ofstream file(path);
        file << "[Desktop Entry]\nType=Application\n";
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

    void readQuestion(const std::string& title, pid_t process) {
        Question question;
        question.title = title;
        question.process = process;
        question.sandbox = take("sandbox");
        question.client = {take("client-name"), take("client-id"), take("client-icon"),
                           take("client-binary")};
        for (const std::string& other : parts(take("beside"), ';'))
            question.beside.push_back(std::stoi(other));
        ApplicationIdentity& expected = question.expected;
        expected.name = take("name");
        if (expected.name.empty())
            fail("needs a name");
        expected.mainProcess = takeNumber("pid", question.process);
        const auto& processes = situation_.processes_.records;
        const auto main = processes.find(expected.mainProcess);
        expected.executable = take("path", main != processes.end() ? main->second.executable : "");
        expected.entry = take("entry");
        const bool hasEntry = !expected.entry.empty();
        expected.icon = take("icon", hasEntry ? icons_.at(expected.entry) : expected.name);
        expected.evidence = evidences.at(take("evidence", hasEntry ? "program" : "file-name"));
        expected.showsPages = take("pages") == "yes";
        situation_.questions_.push_back(question);
    }

    Situation& situation_;
    std::map<std::string, std::string> icons_; // by the entry
    std::filesystem::path path_;
    std::string group_;
    Keys keys_;
};

Situation::Situation(const std::filesystem::path& session, const std::filesystem::path& file) {
    Reader reader(*this);
    reader.read(session);
    reader.read(file);
    entries_ = std::make_unique<DesktopEntries>(
        std::vector{(folder_.path() / "user").string(), (folder_.path() / "system").string()},
        environment_, files_);
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
