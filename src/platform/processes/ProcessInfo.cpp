#include "platform/processes/ProcessInfo.h"

#include "platform/loop/RunLoop.h"
#include "platform/loop/RunLoopSource.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <string_view>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <system_error>
#include <unistd.h>

namespace platform {

namespace {

std::string processFile(pid_t process, std::string_view name) {
    return "/proc/" + std::to_string(process) + "/" + std::string(name);
}

std::optional<std::string> readBeginning(const FileDescriptor& file) {
    if (!file)
        return std::nullopt;
    std::array<char, 16384> content; // a member of many groups has a long status
    const ssize_t size = ::read(file.get(), content.data(), content.size());
    if (size < 0)
        return std::nullopt;
    return std::string(content.data(), static_cast<std::size_t>(size));
}

std::optional<std::string> readSmallFile(const std::string& path) {
    return readBeginning(FileDescriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC)));
}

/// The numbers of one line of the kernel's status file.
std::vector<std::uint32_t> statusNumbers(pid_t process, std::string_view key) {
    const auto status = readSmallFile(processFile(process, "status"));
    const std::string start = "\n" + std::string(key) + ":";
    const std::size_t found = status ? status->find(start) : std::string::npos;
    std::vector<std::uint32_t> numbers;
    if (found == std::string::npos)
        return numbers;
    std::string_view line = std::string_view(*status).substr(found + start.size());
    line = line.substr(0, line.find('\n'));
    while (line.find_first_not_of("\t ") != std::string_view::npos) {
        line.remove_prefix(line.find_first_not_of("\t "));
        std::uint32_t number = 0;
        const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), number);
        if (error != std::errc{})
            break;
        numbers.push_back(number);
        line.remove_prefix(static_cast<std::size_t>(end - line.data()));
    }
    return numbers;
}

} // namespace

std::optional<std::string> executablePath(pid_t process) {
    std::array<char, 4096> target{};
    const ssize_t size =
        ::readlink(processFile(process, "exe").c_str(), target.data(), target.size());
    if (size <= 0)
        return std::nullopt;
    std::string path(target.data(), static_cast<std::size_t>(size));
    constexpr std::string_view deleted = " (deleted)";
    if (path.size() > deleted.size() && path.ends_with(deleted))
        path.resize(path.size() - deleted.size());
    return path;
}

bool runsFile(pid_t process, const std::string& path) {
    struct stat running {};
    struct stat file {};
    return ::stat(processFile(process, "exe").c_str(), &running) == 0 &&
           ::stat(path.c_str(), &file) == 0 && running.st_dev == file.st_dev &&
           running.st_ino == file.st_ino;
}

std::optional<std::string> commandName(pid_t process) {
    auto name = readSmallFile(processFile(process, "comm"));
    if (name && name->ends_with('\n'))
        name->pop_back();
    return name;
}

std::optional<uid_t> processUser(pid_t process) {
    // Not the owner of the folder: those of a process that hides its memory belong to root.
    constexpr std::size_t effective = 1;
    const auto users = statusNumbers(process, "Uid");
    return users.size() > effective ? std::optional<uid_t>(users[effective]) : std::nullopt;
}

std::vector<pid_t> processesOf(uid_t user) {
    std::vector<pid_t> processes;
    std::error_code error;
    for (std::filesystem::directory_iterator each("/proc", error), end; !error && each != end;
         each.increment(error)) {
        const std::string name = each->path().filename();
        pid_t pid = 0;
        const auto [rest, failure] = std::from_chars(name.data(), name.data() + name.size(), pid);
        if (failure == std::errc{} && rest == name.data() + name.size() && processUser(pid) == user)
            processes.push_back(pid);
    }
    std::ranges::sort(processes);
    return processes;
}

std::optional<std::uint64_t> processStartTime(pid_t process) {
    const auto status = readSmallFile(processFile(process, "stat"));
    // The name in parentheses may hold anything; the 22nd field is the 20th behind it.
    const std::size_t nameEnd = status ? status->rfind(')') : std::string::npos;
    if (nameEnd == std::string::npos)
        return std::nullopt;
    std::string_view rest = std::string_view(*status).substr(nameEnd + 1);
    constexpr int fieldsBetween = 20;
    for (int i = 0; i < fieldsBetween; ++i) {
        const std::size_t blank = rest.find(' ');
        if (blank == std::string_view::npos)
            return std::nullopt;
        rest.remove_prefix(blank + 1);
    }
    std::uint64_t ticks = 0;
    if (std::from_chars(rest.data(), rest.data() + rest.size(), ticks).ec != std::errc{})
        return std::nullopt;
    return ticks;
}

std::uint64_t ticksSinceBoot() {
    timespec time{};
    ::clock_gettime(CLOCK_BOOTTIME, &time);
    const auto perSecond = static_cast<std::uint64_t>(::sysconf(_SC_CLK_TCK));
    constexpr std::uint64_t nanosecondsPerSecond = 1'000'000'000;
    return static_cast<std::uint64_t>(time.tv_sec) * perSecond +
           static_cast<std::uint64_t>(time.tv_nsec) * perSecond / nanosecondsPerSecond;
}

std::vector<pid_t> processNumbers(pid_t process) {
    const auto numbers = statusNumbers(process, "NSpid");
    return {numbers.begin(), numbers.end()};
}

bool sharesProcessNumbers(pid_t process) {
    // The name of the namespace: reading it takes half as long as looking at what it leads to.
    const auto namespaceOf = [](const std::string& link) {
        std::array<char, 64> name{};
        const ssize_t size = ::readlink(link.c_str(), name.data(), name.size());
        return std::string(name.data(), size > 0 ? static_cast<std::size_t>(size) : 0);
    };
    static const auto& ours = *new std::string(namespaceOf("/proc/self/ns/pid"));
    return !ours.empty() && namespaceOf(processFile(process, "ns/pid")) == ours;
}

std::string controlGroups(pid_t process) {
    return readSmallFile(processFile(process, "cgroup")).value_or("");
}

std::string fileSeenBy(pid_t process, const std::string& path) {
    // What it shows there is its own choice: no waiting for the other end of a pipe.
    const FileDescriptor file(::open(processFile(process, "root" + path).c_str(),
                                     O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY));
    struct stat status {};
    if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return {};
    return readBeginning(file).value_or("");
}

ProcessWatch::ProcessWatch(FileDescriptor process) : process_(std::move(process)) {}

ProcessWatch::~ProcessWatch() = default;

std::unique_ptr<ProcessWatch> ProcessWatch::create(RunLoop& loop, pid_t process,
                                                   std::function<void()> ended) {
    // The C library of Debian 12 declares no pidfd_open that C++ can use.
    FileDescriptor descriptor(static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));
    if (!descriptor)
        return nullptr;
    std::unique_ptr<ProcessWatch> watch(new ProcessWatch(std::move(descriptor)));
    ProcessWatch& self = *watch;
    watch->source_ = RunLoopSource::create(loop, self.process_.get(), RunLoopSource::reading,
                                           [&self, call = std::move(ended)] {
                                               self.source_.reset();
                                               call();
                                           });
    if (watch->source_ == nullptr)
        return nullptr;
    return watch;
}

} // namespace platform
