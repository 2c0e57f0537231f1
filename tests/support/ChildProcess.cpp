#include "support/ChildProcess.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <linux/close_range.h>
#include <map>
#include <poll.h>
#include <string_view>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace support {

namespace {

using platform::FileDescriptor;

FileDescriptor checked(int descriptor, const char* what) {
    if (descriptor < 0)
        throw std::system_error(errno, std::generic_category(), what);
    return FileDescriptor(descriptor);
}

std::string findProgram(const std::string& name) {
    if (name.find('/') != std::string::npos)
        return name;
    const char* const variable = std::getenv("PATH");
    std::string_view folders = variable ? variable : "/usr/bin:/bin";
    while (!folders.empty()) {
        const auto colon = std::min(folders.find(':'), folders.size());
        std::string path = std::string(folders.substr(0, colon)) + "/" + name;
        if (::access(path.c_str(), X_OK) == 0)
            return path;
        folders.remove_prefix(std::min(colon + 1, folders.size()));
    }
    throw std::system_error(ENOENT, std::generic_category(), name);
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    result.reserve(texts.size() + 1);
    for (auto& text : texts)
        result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

std::vector<std::string>
environmentWith(const std::vector<std::pair<std::string, std::string>>& additions) {
    std::map<std::string, std::string, std::less<>> variables;
    for (char** entry = environ; *entry; ++entry) {
        const std::string_view text = *entry;
        const auto equals = std::min(text.find('='), text.size());
        variables[std::string(text.substr(0, equals))] = text;
    }
    for (const auto& [name, value] : additions)
        variables[name] = std::string(name).append("=").append(value);
    std::vector<std::string> result;
    result.reserve(variables.size());
    for (auto& [name, text] : variables)
        result.push_back(std::move(text));
    return result;
}

/// All that the child needs, made before the fork: afterwards only system calls are allowed.
struct Start {
    std::string program;
    std::vector<char*> arguments;
    std::vector<char*> environment;
    int output;
    bool keepErrors;
    int report; ///< where the error of a failed start goes; closed by a successful one
    pid_t parent;
};

void resetSignals() {
    struct sigaction action {};
    action.sa_handler = SIG_DFL;
    for (int number = 1; number < NSIG; ++number)
        ::sigaction(number, &action, nullptr);
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

[[noreturn]] void runChild(const Start& start) {
    resetSignals();
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != start.parent)
        ::_exit(127);
    const int nothing = ::open("/dev/null", O_RDONLY);
    if (nothing >= 0 && ::dup2(nothing, STDIN_FILENO) >= 0 &&
        ::dup2(start.output, STDOUT_FILENO) >= 0 &&
        (!start.keepErrors || ::dup2(start.output, STDERR_FILENO) >= 0)) {
        ::close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
        ::execve(start.program.c_str(), start.arguments.data(), start.environment.data());
    }
    const int error = errno;
    [[maybe_unused]] const ssize_t written = ::write(start.report, &error, sizeof error);
    ::_exit(127);
}

pid_t startProcess(const std::vector<std::string>& arguments, const ChildProcess::Options& options,
                   int output) {
    auto argumentTexts = arguments;
    auto environmentTexts = environmentWith(options.environment);
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe2");
    const FileDescriptor reading(ends[0]);
    FileDescriptor writing(ends[1]);
    const Start start{findProgram(arguments.at(0)),
                      pointers(argumentTexts),
                      pointers(environmentTexts),
                      output,
                      options.keepErrors,
                      writing.get(),
                      ::getpid()};
    const pid_t pid = ::fork();
    if (pid < 0)
        throw std::system_error(errno, std::generic_category(), "fork");
    if (pid == 0)
        runChild(start);
    writing.reset();
    int error = 0;
    if (TEMP_FAILURE_RETRY(::read(reading.get(), &error, sizeof error)) == sizeof error) {
        TEMP_FAILURE_RETRY(::waitpid(pid, nullptr, 0));
        throw std::system_error(error, std::generic_category(), start.program);
    }
    return pid;
}

/// Waits for the end of a child that has not been waited for yet.
bool endsWithin(pid_t pid, std::chrono::milliseconds bound) {
    const FileDescriptor process(static_cast<int>(::syscall(SYS_pidfd_open, pid, 0)));
    pollfd ended{process.get(), POLLIN, 0};
    return TEMP_FAILURE_RETRY(::poll(&ended, 1, static_cast<int>(bound.count()))) > 0;
}

} // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& arguments)
    : ChildProcess(arguments, Options{}) {}

ChildProcess::ChildProcess(const std::vector<std::string>& arguments, const Options& options)
    : output_(checked(::memfd_create("output", MFD_CLOEXEC), "memfd_create"))
    , pid_(startProcess(arguments, options, output_.get())) {}

ChildProcess::~ChildProcess() {
    stop();
}

bool ChildProcess::isRunning() noexcept {
    return !reap(WNOHANG);
}

void ChildProcess::signal(int number) noexcept {
    if (isRunning())
        ::kill(pid_, number);
}

std::optional<int> ChildProcess::wait(std::chrono::milliseconds bound) {
    if (!waitUntil([this] { return !isRunning(); }, bound))
        return std::nullopt;
    return status_;
}

int ChildProcess::stop(int number) noexcept {
    if (isRunning()) {
        ::kill(pid_, number);
        ::kill(pid_, SIGCONT);
        if (!endsWithin(pid_, std::chrono::seconds(10)))
            ::kill(pid_, SIGKILL);
        reap(0);
    }
    return status_.value_or(-1);
}

bool ChildProcess::reap(int waitFlags) noexcept {
    int status = 0;
    if (!status_ && TEMP_FAILURE_RETRY(::waitpid(pid_, &status, waitFlags)) == pid_)
        status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return status_.has_value();
}

std::string ChildProcess::output() const {
    return outputFrom(0);
}

std::string ChildProcess::outputFrom(std::size_t from) const {
    const std::size_t size = outputSize();
    std::string text(size > from ? size - from : 0, '\0');
    const ssize_t got = ::pread(output_.get(), text.data(), text.size(), static_cast<off_t>(from));
    text.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
    return text;
}

std::size_t ChildProcess::outputSize() const noexcept {
    struct stat facts {};
    return ::fstat(output_.get(), &facts) == 0 ? static_cast<std::size_t>(facts.st_size) : 0;
}

CommandResult runCommand(const std::vector<std::string>& arguments) {
    ChildProcess command(arguments);
    const std::optional<int> status = command.wait();
    return {status.value_or(-1), command.output()};
}

} // namespace support
