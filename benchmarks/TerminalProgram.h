#pragma once

#include "platform/base/FileDescriptor.h"

#include <chrono>
#include <optional>
#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

namespace bench {

/// A program in a pseudo-terminal of 200 columns and 50 lines, killed at the end. Throws
/// std::system_error when it cannot be started.
class TerminalProgram {
  public:
    /// `environment` is all that it gets.
    TerminalProgram(const std::vector<std::string>& arguments,
                    const std::vector<std::pair<std::string, std::string>>& environment);
    ~TerminalProgram();
    TerminalProgram(const TerminalProgram&) = delete;
    TerminalProgram& operator=(const TerminalProgram&) = delete;

    /// Waits until it has written this word to its screen, and answers the time from its start.
    std::optional<std::chrono::steady_clock::duration>
    timeUntilWritten(const std::string& word, std::chrono::steady_clock::duration bound);

  private:
    platform::FileDescriptor terminal_;
    pid_t pid_ = -1;
    std::chrono::steady_clock::time_point start_;
    std::string written_;
};

} // namespace bench
