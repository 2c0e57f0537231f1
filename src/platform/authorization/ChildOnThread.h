#pragma once

#include "platform/base/FileDescriptor.h"

#include <future>
#include <memory>
#include <string>
#include <vector>

namespace platform {

/// A program that a thread of its own starts and waits for: some programs, pkexec among them, ask
/// to be killed when the thread that started them ends. It inherits the standard descriptors below
/// only. Destroying the object closes them and lets the program go on. One thread at a time.
class ChildOnThread {
  public:
    /// `arguments` begins with the program's absolute path. Throws std::system_error if it cannot
    /// be started.
    explicit ChildOnThread(const std::vector<std::string>& arguments);

    /// Its standard output and error, to read from. They do not block.
    [[nodiscard]] int output() const noexcept { return output_.get(); }
    [[nodiscard]] int errors() const noexcept { return errors_.get(); }

    /// Writes to its standard input. Nothing happens if it reads no more.
    void send(char byte) const noexcept;

    /// Ends it by SIGTERM, unless it has ended or has become another user's. Any thread.
    void end() const noexcept;

    /// Waits for its end: its exit status, or 128 and the signal that ended it.
    [[nodiscard]] int status() const { return status_.get(); }

  private:
    struct Life;

    std::shared_ptr<Life> life_; // shared with the thread
    FileDescriptor input_;
    FileDescriptor output_;
    FileDescriptor errors_;
    std::shared_future<int> status_;
};

} // namespace platform
