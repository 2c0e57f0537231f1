#pragma once

#include "platform/authorization/ChildOnThread.h"
#include "platform/base/Mutex.h"

#include <optional>
#include <string>
#include <vector>

namespace platform {

/// Whether this process may create, replace and remove `path`, a file or folder, without further
/// rights. Any thread.
[[nodiscard]] bool mayReplace(const std::string& path);

/// Runs a tool as administrator by pkexec, which lets polkit ask the user, or with the rights that
/// this process has. The tool takes part as ToolHandshake.h says. In this order:
///
///  1. authorize() starts it. Whatever must happen only once the user has agreed comes next.
///  2. run() lets it work and returns its reply.
///
/// Destroyed in between, it lets the tool leave everything as it is. Both calls block, the first
/// for as long as the user thinks: never on the main thread, see waitServingEvents(). One thread at
/// a time.
class PrivilegedTool {
  public:
    enum class Rights { own, administrator };

    enum class Answer {
        granted,
        cancelled,     ///< the user has dismissed the question
        noPkexec,      ///< pkexec is not installed
        noPolkit,      ///< the service that decides does not answer
        noAgent,       ///< nothing in this session can ask the user
        notAuthorized, ///< by the administrator's rules, or after wrong passwords
        failed,        ///< the tool could not be started, or has ended at once; see status()
    };

    /// `arguments` begins with the tool's canonical path: polkit compares it byte for byte.
    PrivilegedTool(std::vector<std::string> arguments, Rights rights,
                   std::string pkexec = "/usr/bin/pkexec");

    Answer authorize();

    /// Takes the question back: authorize(), under way or not yet called, answers "cancelled"
    /// unless the user has just agreed. Any thread.
    void cancel();

    /// After authorize() has failed: the errno of starting, else the exit status, or 128 and the
    /// signal that ended it. After run(), the same of the tool's end.
    [[nodiscard]] int status() const noexcept { return status_; }

    /// Everything that the tool prints after it has been granted; empty if it ends without a reply,
    /// or with one of more than a MiB.
    std::string run();

  private:
    bool start();
    void forgetChild();
    bool isCancelled();
    bool awaitAuthorization();
    Answer reasonOfEnd();

    const std::vector<std::string> arguments_;
    const Rights rights_;
    const std::string pkexec_;
    Mutex mutex_; // for changes of child_, and its use by cancel()
    bool isCancelled_ GUARDED_BY(mutex_) = false;
    std::optional<ChildOnThread> child_;
    std::string messages_; // on standard error before authorization
    std::string reply_;
    int status_ = 0;
};

} // namespace platform
