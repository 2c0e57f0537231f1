#include "platform/processes/ToolRun.h"

#include "platform/base/FileDescriptor.h"
#include "platform/base/MonotonicClock.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <string_view>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace platform {

namespace {

std::vector<std::string> toolEnvironment() {
    constexpr std::array kept{"HOME=",    "XDG_RUNTIME_DIR=", "DBUS_SESSION_BUS_ADDRESS=",
                              "PIPEWIRE", "PULSE_",           "XDG_CONFIG_HOME=",
                              "TMPDIR=",  "XDG_STATE_HOME=",  "XDG_DATA_HOME="};
    std::vector<std::string> result{"LC_ALL=C.UTF-8", "PATH=/usr/sbin:/usr/bin:/sbin:/bin",
                                    "DEBUGINFOD_URLS="};
    for (char** variable = environ; *variable != nullptr; ++variable) {
        const std::string_view text = *variable;
        if (std::any_of(kept.begin(), kept.end(),
                        [&](const char* one) { return text.starts_with(one); }))
            result.emplace_back(text);
    }
    return result;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

class SpawnActions {
  public:
    explicit SpawnActions(int output) {
        ::posix_spawn_file_actions_init(&actions_);
        ::posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        ::posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO);
        ::posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    }
    ~SpawnActions() { ::posix_spawn_file_actions_destroy(&actions_); }
    SpawnActions(const SpawnActions&) = delete;
    SpawnActions& operator=(const SpawnActions&) = delete;

    const posix_spawn_file_actions_t* get() const noexcept { return &actions_; }

  private:
    posix_spawn_file_actions_t actions_{};
};

/// A process group of its own, default actions for all signals, and none blocked.
class SpawnAttributes {
  public:
    SpawnAttributes() {
        sigset_t all;
        sigset_t none;
        ::sigfillset(&all);
        ::sigemptyset(&none);
        ::posix_spawnattr_init(&attributes_);
        ::posix_spawnattr_setpgroup(&attributes_, 0);
        ::posix_spawnattr_setsigdefault(&attributes_, &all);
        ::posix_spawnattr_setsigmask(&attributes_, &none);
        ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF |
                                                     POSIX_SPAWN_SETSIGMASK);
    }
    ~SpawnAttributes() { ::posix_spawnattr_destroy(&attributes_); }
    SpawnAttributes(const SpawnAttributes&) = delete;
    SpawnAttributes& operator=(const SpawnAttributes&) = delete;

    const posix_spawnattr_t* get() const noexcept { return &attributes_; }

  private:
    posix_spawnattr_t attributes_{};
};

/// The process, which ends with the object, together with what it has started.
class Tool {
  public:
    Tool(std::vector<std::string> arguments, int output) {
        std::vector<std::string> environment = toolEnvironment();
        const SpawnActions actions(output);
        const SpawnAttributes attributes;
        if (::posix_spawn(&process_, arguments.front().c_str(), actions.get(), attributes.get(),
                          pointersTo(arguments).data(), pointersTo(environment).data()) != 0)
            process_ = 0;
        else
            handle_.reset(static_cast<int>(::syscall(SYS_pidfd_open, process_, 0)));
    }
    ~Tool() { static_cast<void>(end()); }
    Tool(const Tool&) = delete;
    Tool& operator=(const Tool&) = delete;

    explicit operator bool() const noexcept { return process_ > 0; }

    /// Readable once the process has ended.
    int handle() const noexcept { return handle_.get(); }

    int end() noexcept {
        if (process_ <= 0)
            return 0;
        ::kill(-process_, SIGKILL);
        int status = 0;
        while (::waitpid(process_, &status, 0) < 0 && errno == EINTR) {
        }
        process_ = 0;
        constexpr int bySignal = 128;
        return WIFEXITED(status) ? WEXITSTATUS(status) : bySignal + WTERMSIG(status);
    }

  private:
    pid_t process_ = 0;
    FileDescriptor handle_;
};

class Output {
  public:
    Output(const ToolCall& call, ToolResult& result) : call_(call), result_(result) {}

    /// Takes what there is. False at the end, and when there is too much.
    bool read(int pipe) {
        std::array<char, 65536> block;
        const ssize_t size = ::read(pipe, block.data(), block.size());
        if (size < 0)
            return errno == EINTR || errno == EAGAIN;
        result_.output.append(block.data(), static_cast<std::size_t>(size));
        if (result_.output.size() > (call_.keepsEnd ? 2 : 1) * call_.outputLimit)
            cut();
        return size > 0 && (call_.keepsEnd || !result_.isCut);
    }

    void cut() {
        if (result_.output.size() <= call_.outputLimit)
            return;
        result_.isCut = true;
        if (call_.keepsEnd)
            result_.output.erase(0, result_.output.size() - call_.outputLimit);
        else
            result_.output.resize(call_.outputLimit);
    }

  private:
    const ToolCall& call_;
    ToolResult& result_;
};

int millisecondsUntil(MonotonicClock::time_point deadline) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - MonotonicClock::now());
    return static_cast<int>(std::clamp<std::chrono::milliseconds::rep>(left.count(), 0, 1000));
}

/// Reads until the process has ended, its output is too long, or the time is over. What it has
/// started may keep the pipe open.
void follow(const Tool& tool, int pipe, const ToolCall& call, ToolResult& result) {
    const auto deadline = MonotonicClock::now() + call.timeLimit;
    Output output(call, result);
    while (!result.isLate) {
        std::array<pollfd, 2> watched{{{tool.handle(), POLLIN, 0}, {pipe, POLLIN, 0}}};
        ::poll(watched.data(), watched.size(), millisecondsUntil(deadline));
        if (watched[1].revents != 0 && !output.read(pipe)) {
            if (result.isCut && !call.keepsEnd)
                break;
            pipe = -1;
        } else if (watched[1].revents == 0 && watched[0].revents != 0) {
            break;
        }
        result.isLate = MonotonicClock::now() >= deadline;
    }
    output.cut();
}

} // namespace

std::optional<ToolResult> runTool(const ToolCall& call) {
    int ends[2] = {-1, -1};
    if (call.outputDescriptor < 0 && ::pipe2(ends, O_CLOEXEC) != 0)
        return std::nullopt;
    const FileDescriptor ours(ends[0]);
    FileDescriptor theirs(ends[1]);
    Tool tool(call.arguments, call.outputDescriptor < 0 ? theirs.get() : call.outputDescriptor);
    theirs.reset();
    if (!tool || tool.handle() < 0)
        return std::nullopt;
    ToolResult result;
    follow(tool, ours.get(), call, result);
    result.status = tool.end();
    return result;
}

} // namespace platform
