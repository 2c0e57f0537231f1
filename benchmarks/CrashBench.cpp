#include "Harness.h"

#include "platform/base/FileDescriptor.h"
#include "platform/crash/CrashFolder.h"
#include "support/ChildProcess.h"
#include "support/PrivateFolder.h"
#include "support/WaitUntil.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <sys/syscall.h>
#include <unistd.h>

// How long a program takes to die of a signal when it leaves a record of it.
namespace {

using Clock = std::chrono::steady_clock;

void waitForEnd(pid_t process) {
    const platform::FileDescriptor descriptor(
        static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));
    pollfd end{descriptor.get(), POLLIN, 0};
    if (::poll(&end, 1, -1) != 1)
        throw std::runtime_error("the process cannot be watched");
}

/// Milliseconds from the signal to the death of a plug-in.
double timeOfDeath(bool leavesRecord) {
    const support::PrivateFolder folder;
    const std::filesystem::path reports = folder.path() / "Tonvale/DiagnosticReports";
    if (!leavesRecord)
        platform::setCrashWriting(reports, false);
    support::ChildProcess plugin(
        {"prlimit", "--core=0:0", TONVALE_PLUGIN},
        {.environment = {{"XDG_STATE_HOME", folder.path()}, {"XDG_RUNTIME_DIR", folder.path()}}});
    const auto lock = folder.path() / "com.quarnel.Tonvale.Plugin.lock";
    if (!support::waitUntil([&] { return std::filesystem::exists(lock); }))
        throw std::runtime_error("the plug-in does not start");
    const auto begin = Clock::now();
    plugin.signal(SIGSEGV);
    waitForEnd(plugin.pid());
    const std::chrono::duration<double, std::milli> time = Clock::now() - begin;
    constexpr int bySignal = 128;
    if (plugin.wait() != bySignal + SIGSEGV)
        throw std::runtime_error("the plug-in has not died of the signal");
    std::size_t records = 0;
    for (const auto& file : std::filesystem::directory_iterator(reports))
        records += file.path().extension() == platform::crashRecordEnding ? 1U : 0U;
    if (records != (leavesRecord ? 1U : 0U))
        throw std::runtime_error("there should be one record, or none");
    return time.count();
}

const bool isAdded = bench::addFigure({.name = "crash/death",
                                       .metric = "from the signal to the end of the plug-in",
                                       .unit = "ms",
                                       .ours = [] { return timeOfDeath(true); },
                                       .peerName = "without a record",
                                       .peer = [] { return timeOfDeath(false); }});

} // namespace
