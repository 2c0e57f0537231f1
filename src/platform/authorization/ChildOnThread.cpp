#include "platform/authorization/ChildOnThread.h"

#include "platform/base/Mutex.h"
#include "platform/base/ThreadCalls.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <memory>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace platform {

namespace {

[[noreturn]] void fail(int error, const std::string& what) {
    throw std::system_error(error, std::generic_category(), what);
}

struct Ends {
    FileDescriptor ours;
    FileDescriptor theirs;
};

Ends openPipe() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        fail(errno, "pipe");
    Ends pipe{FileDescriptor(ends[0]), FileDescriptor(ends[1])};
    if (::fcntl(pipe.ours.get(), F_SETFL, O_NONBLOCK) != 0)
        fail(errno, "pipe");
    return pipe;
}

/// For its input: writing to a socket that nobody reads can do without SIGPIPE.
Ends openSocketPair() {
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        fail(errno, "socketpair");
    return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

/// The descriptors that the program gets, in their order.
struct Standard {
    FileDescriptor input;
    FileDescriptor output;
    FileDescriptor errors;
};

class FileActions {
  public:
    explicit FileActions(const Standard& standard) {
        ::posix_spawn_file_actions_init(&actions_);
        ::posix_spawn_file_actions_adddup2(&actions_, standard.input.get(), STDIN_FILENO);
        ::posix_spawn_file_actions_adddup2(&actions_, standard.output.get(), STDOUT_FILENO);
        ::posix_spawn_file_actions_adddup2(&actions_, standard.errors.get(), STDERR_FILENO);
    }
    ~FileActions() { ::posix_spawn_file_actions_destroy(&actions_); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;

    const posix_spawn_file_actions_t* get() const noexcept { return &actions_; }

  private:
    posix_spawn_file_actions_t actions_{};
};

/// Default actions for all signals, and none blocked.
class SignalAttributes {
  public:
    SignalAttributes() {
        sigset_t all;
        sigset_t none;
        ::sigfillset(&all);
        ::sigemptyset(&none);
        ::posix_spawnattr_init(&attributes_);
        ::posix_spawnattr_setsigdefault(&attributes_, &all);
        ::posix_spawnattr_setsigmask(&attributes_, &none);
        ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
    }
    ~SignalAttributes() { ::posix_spawnattr_destroy(&attributes_); }
    SignalAttributes(const SignalAttributes&) = delete;
    SignalAttributes& operator=(const SignalAttributes&) = delete;

    const posix_spawnattr_t* get() const noexcept { return &attributes_; }

  private:
    posix_spawnattr_t attributes_{};
};

int spawn(std::vector<std::string> arguments, const Standard& standard, pid_t& process) {
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    const FileActions actions(standard);
    const SignalAttributes attributes;
    return ::posix_spawn(&process, pointers.front(), actions.get(), attributes.get(),
                         pointers.data(), environ);
}

/// Returns when it has ended; its number stays its own until it is reaped.
void awaitEnd(pid_t process) noexcept {
    siginfo_t info{};
    while (::waitid(P_PID, static_cast<id_t>(process), &info, WEXITED | WNOWAIT) < 0 &&
           errno == EINTR) {
    }
}

int reap(pid_t process) noexcept {
    int status = 0;
    while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    constexpr int bySignal = 128;
    return WIFEXITED(status) ? WEXITSTATUS(status) : bySignal + WTERMSIG(status);
}

} // namespace

/// What the thread shares with the object.
struct ChildOnThread::Life {
    std::vector<std::string> arguments;
    Standard standard;
    std::promise<int> started; ///< an errno
    std::promise<int> status;
    Mutex mutex;
    pid_t process GUARDED_BY(mutex) = 0; ///< 0: there is none

    void live() {
        pid_t child = 0;
        const int error = spawn(arguments, standard, child);
        standard = {};
        if (error == 0)
            setProcess(child);
        started.set_value(error);
        if (error != 0)
            return;
        awaitEnd(child);
        setProcess(0);
        status.set_value(reap(child));
    }

    void setProcess(pid_t number) {
        const ScopedLock lock(mutex);
        process = number;
    }
};

ChildOnThread::ChildOnThread(const std::vector<std::string>& arguments) {
    Ends input = openSocketPair();
    Ends output = openPipe();
    Ends errors = openPipe();
    life_ = std::make_shared<Life>();
    life_->arguments = arguments;
    life_->standard = {std::move(input.theirs), std::move(output.theirs), std::move(errors.theirs)};
    status_ = life_->status.get_future().share();
    startDetachedThread("child", [life = life_] { life->live(); });
    if (const int error = life_->started.get_future().get(); error != 0)
        fail(error, arguments.front());
    input_ = std::move(input.ours);
    output_ = std::move(output.ours);
    errors_ = std::move(errors.ours);
}

void ChildOnThread::end() const noexcept {
    const ScopedLock lock(life_->mutex);
    if (life_->process != 0)
        ::kill(life_->process, SIGTERM);
}

void ChildOnThread::send(char byte) const noexcept {
    ::send(input_.get(), &byte, 1, MSG_NOSIGNAL);
}

} // namespace platform
