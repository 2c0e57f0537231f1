#include "platform/processes/EndProcesses.h"

#include "platform/base/FileDescriptor.h"
#include "platform/base/MonotonicClock.h"
#include "platform/processes/ProcessInfo.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

namespace platform {

namespace {

FileDescriptor openProcess(pid_t process) noexcept {
    return FileDescriptor(static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));
}

bool isCalled(pid_t process, const std::string& name) {
    const auto executable = executablePath(process);
    return commandName(process) == name ||
           (executable && std::filesystem::path(*executable).filename() == name);
}

/// Opens each process before it is looked at: a later process with its number is never hit.
std::vector<FileDescriptor> openProcesses(const std::string& name) {
    std::vector<FileDescriptor> found;
    for (const pid_t process : processesOf(::geteuid())) {
        if (process == ::getpid())
            continue;
        FileDescriptor opened = openProcess(process);
        if (opened && processUser(process) == ::geteuid() && isCalled(process, name))
            found.push_back(std::move(opened));
    }
    return found;
}

void signalAll(const std::vector<FileDescriptor>& processes, int signal) noexcept {
    for (const FileDescriptor& process : processes)
        ::syscall(SYS_pidfd_send_signal, process.get(), signal, nullptr, 0);
}

/// Waits for the end of all, and drops those that have ended. Real time passes in short slices,
/// since the program's clock may be a test's.
void waitForEnd(std::vector<FileDescriptor>& processes, std::chrono::seconds patience) {
    constexpr int slice = 20; // ms
    const auto deadline = MonotonicClock::now() + patience;
    const auto hasEnded = [](const FileDescriptor& process) {
        pollfd state{process.get(), POLLIN, 0};
        return ::poll(&state, 1, 0) == 1;
    };
    for (;;) {
        std::erase_if(processes, hasEnded);
        if (processes.empty() || MonotonicClock::now() >= deadline)
            return;
        pollfd first{processes.front().get(), POLLIN, 0};
        ::poll(&first, 1, slice);
    }
}

} // namespace

bool endProcesses(const std::string& name, std::chrono::seconds patience) {
    std::vector<FileDescriptor> processes = openProcesses(name);
    for (const int signal : {SIGTERM, SIGKILL}) {
        signalAll(processes, signal);
        waitForEnd(processes, patience);
    }
    return processes.empty();
}

} // namespace platform
