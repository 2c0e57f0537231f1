#include "relauncher/ProcessWait.h"

#include "platform/base/FileDescriptor.h"
#include "platform/base/MonotonicClock.h"
#include "platform/base/SystemLog.h"
#include "platform/processes/ProcessInfo.h"

#include <chrono>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::microseconds interval{200'000};
constexpr auto patience = 1min;

/// One that nobody has taken notice of yet has ended too.
bool hasEnded(pid_t process, std::uint64_t startTime, const platform::FileDescriptor& opened) {
    pollfd state{opened.get(), POLLIN, 0};
    if (opened && ::poll(&state, 1, 0) == 1)
        return true;
    return platform::processStartTime(process) != startTime;
}

void pause(const platform::FileDescriptor& opened) {
    pollfd state{opened.get(), POLLIN, 0}; // no descriptor: it only waits
    ::poll(
        &state, 1,
        static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(interval).count()));
}

} // namespace

void waitForEndOf(pid_t process, std::uint64_t startTime) {
    const platform::FileDescriptor opened(static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));
    const auto start = platform::MonotonicClock::now();
    bool hasSaid = false;
    while (!hasEnded(process, startTime, opened)) {
        pause(opened);
        if (!hasSaid && platform::MonotonicClock::now() - start >= patience) {
            hasSaid = true;
            platform::systemLog(platform::LogPriority::warning,
                                "Tonvale (process %d) doesn't end; its copy starts once it has",
                                process);
        }
    }
}
