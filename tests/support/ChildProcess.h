#pragma once

#include "support/WaitUntil.h"

#include "platform/base/FileDescriptor.h"

#include <chrono>
#include <csignal>
#include <optional>
#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

namespace support {

/// A program that a test starts. It begins with no open descriptors but the standard ones, with
/// default signal actions and nothing blocked, reads nothing, and is killed when the thread that
/// started it ends, however that comes about. What it prints is kept in memory.
///
/// The thread that made it only.
class ChildProcess {
  public:
    struct Options {
        /// Set in the child's environment, which is otherwise ours.
        std::vector<std::pair<std::string, std::string>> environment;
        /// False leaves standard error to ours, so that output() is what went to standard output.
        bool keepErrors = true;
    };

    /// `arguments` begins with the program, which is looked up in PATH when it has no slash. Throws
    /// std::system_error when it cannot be started.
    explicit ChildProcess(const std::vector<std::string>& arguments);
    ChildProcess(const std::vector<std::string>& arguments, const Options& options);

    /// stop()
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t pid() const noexcept { return pid_; }
    bool isRunning() noexcept;

    /// Sends a signal; nothing happens when the process has ended.
    void signal(int number) noexcept;

    /// The exit status, or 128 + the signal that ended it, once the process has ended; nothing when
    /// it has not within the bound. Serves events meanwhile.
    std::optional<int> wait(std::chrono::milliseconds bound = patience);

    /// Ends the process: sends `number`, waits, and kills it when 10 seconds were not enough. The
    /// answer is that of wait(). Serves no events.
    int stop(int number = SIGTERM) noexcept;

    /// Everything that it has printed.
    std::string output() const;

    /// That, without the first `from` bytes.
    std::string outputFrom(std::size_t from) const;
    std::size_t outputSize() const noexcept;

  private:
    bool reap(int waitFlags) noexcept;

    const platform::FileDescriptor output_;
    const pid_t pid_;
    std::optional<int> status_;
};

struct CommandResult {
    int status;
    std::string output;
};

/// Runs a program to its end and returns the result. A status of -1 says that it took longer than
/// waitUntil() has patience for.
CommandResult runCommand(const std::vector<std::string>& arguments);

} // namespace support
