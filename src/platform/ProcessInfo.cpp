#include "platform/ProcessInfo.h"

#include "platform/RunLoop.h"
#include "platform/RunLoopSource.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace platform {

namespace {

std::string processFile(pid_t process, std::string_view name) {
    return "/proc/" + std::to_string(process) + "/" + std::string(name);
}

std::optional<std::string> readSmallFile(const std::string& path) {
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file)
        return std::nullopt;
    std::array<char, 4096> content{};
    const ssize_t size = ::read(file.get(), content.data(), content.size());
    if (size < 0)
        return std::nullopt;
    return std::string(content.data(), static_cast<std::size_t>(size));
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

std::optional<std::string> commandName(pid_t process) {
    auto name = readSmallFile(processFile(process, "comm"));
    if (name && name->ends_with('\n'))
        name->pop_back();
    return name;
}

std::optional<uid_t> processUser(pid_t process) {
    struct stat status {};
    if (::stat(processFile(process, "").c_str(), &status) != 0)
        return std::nullopt;
    return status.st_uid;
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
