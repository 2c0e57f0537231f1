#include "naming/ProcessView.h"

#include "platform/base/FileDescriptor.h"
#include "platform/processes/ProcessInfo.h"
#include "platform/processes/ProcessSandbox.h"

#include <algorithm>
#include <charconv>
#include <fcntl.h>
#include <string_view>
#include <system_error>
#include <unistd.h>

namespace {

constexpr std::string_view appImageMount = "/tmp/.mount_";

/// A file of the process whole, as far as that is reasonable: command lines and environments are
/// long at times.
std::string contentOf(pid_t process, const char* name) {
    constexpr std::size_t largest = 1 << 20;
    constexpr std::size_t step = 1 << 14;
    const std::string path = "/proc/" + std::to_string(process) + "/" + name;
    const platform::FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    std::string content;
    std::size_t size = 0;
    for (ssize_t got = file ? 1 : 0; got > 0 && size < largest;
         size += static_cast<std::size_t>(got)) {
        content.resize(size + step);
        got = std::max<ssize_t>(::read(file.get(), content.data() + size, step), 0);
    }
    content.resize(size);
    return content;
}

std::vector<std::string> split(std::string_view content) {
    std::vector<std::string> texts;
    while (!content.empty()) {
        const std::string_view text = content.substr(0, content.find('\0'));
        texts.emplace_back(text);
        content.remove_prefix(std::min(text.size() + 1, content.size()));
    }
    return texts;
}

/// The value of a variable in an environment as the kernel shows it.
std::string_view variable(std::string_view environment, std::string_view name) {
    while (!environment.empty()) {
        std::string_view line = environment.substr(0, environment.find('\0'));
        environment.remove_prefix(std::min(line.size() + 1, environment.size()));
        if (line.size() > name.size() && line.starts_with(name) && line[name.size()] == '=')
            return line.substr(name.size() + 1);
    }
    return {};
}

/// Of the status line: after the name, which may contain anything, and the state come the numbers
/// of the parent, the group and the session.
void readStatus(ProcessRecord& record) {
    const std::string status = contentOf(record.pid, "stat");
    const std::size_t nameEnd = status.rfind(')');
    constexpr std::size_t stateLength = 4; // ") S "
    if (nameEnd == std::string::npos || status.size() <= nameEnd + stateLength)
        return;
    pid_t group = 0;
    const char* at = status.data() + nameEnd + stateLength;
    const char* const end = status.data() + status.size();
    for (pid_t* const number : {&record.parent, &group, &record.session}) {
        at = std::from_chars(at, end, *number).ptr;
        at += at != end ? 1 : 0;
    }
}

/// Whether the variable holds a number that the process has, in our counting or in its own.
bool namesItself(pid_t process, std::string_view value) {
    pid_t number = 0;
    if (std::from_chars(value.data(), value.data() + value.size(), number).ec != std::errc{})
        return false;
    const std::vector<pid_t> numbers = platform::processNumbers(process);
    return std::ranges::find(numbers, number) != numbers.end();
}

void readEnvironment(ProcessRecord& record) {
    const std::string environment = contentOf(record.pid, "environ");
    const std::string_view entry = variable(environment, "GIO_LAUNCHED_DESKTOP_FILE");
    if (!entry.empty() &&
        namesItself(record.pid, variable(environment, "GIO_LAUNCHED_DESKTOP_FILE_PID")))
        record.launchedEntry = entry;
    if (record.executable.starts_with(appImageMount))
        record.appImage = variable(environment, "APPIMAGE");
}

} // namespace

std::optional<ProcessRecord> ProcessView::process(pid_t pid) const {
    const auto start = startTime(pid);
    const auto user = platform::processUser(pid);
    if (!start || !user)
        return std::nullopt;
    ProcessRecord record;
    record.pid = pid;
    readStatus(record);
    record.startTime = *start;
    record.user = *user;
    record.executable = platform::executablePath(pid).value_or("");
    record.arguments = split(contentOf(pid, "cmdline"));
    record.controlGroups = platform::controlGroups(pid);
    record.sandbox = platform::sandboxApplication(platform::fileSeenBy(pid, "/.flatpak-info"),
                                                  record.controlGroups);
    readEnvironment(record);
    return record;
}

std::optional<std::uint64_t> ProcessView::startTime(pid_t pid) const {
    return platform::processStartTime(pid);
}

std::vector<pid_t> ProcessView::processesOf(uid_t user) const {
    return platform::processesOf(user);
}
