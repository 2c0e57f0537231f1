#include "platform/crash/CrashHandler.h"

#include "platform/base/LastLine.h"
#include "platform/base/SystemLog.h"
#include "platform/crash/AlternateStack.h"
#include "platform/crash/CrashContext.h"
#include "platform/crash/CrashWriter.h"
#include "platform/crash/LastException.h"
#include "platform/crash/MemoryMap.h"
#include "platform/crash/Sanitizers.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csetjmp>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <execinfo.h>
#include <fstream>
#include <iterator>
#include <memory>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <system_error>
#include <unistd.h>

namespace platform {

namespace {

constexpr int faults[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS};
constexpr unsigned longestWriting = 5; // s

// Written once, before the handlers are there.
const CrashRecord* record = nullptr; // never destroyed: a program may die at its very end
pid_t process = 0;
std::array<struct sigaction, std::size(faults)> earlier{};

std::atomic<pid_t> dyingThread{0};
std::atomic<bool> isWritten{false};
// The dying thread's: where it goes on when writing has failed or takes too long.
sigjmp_buf wayOut;
volatile std::sig_atomic_t hasWayOut = 0;

void writeCause(CrashWriter& out, const siginfo_t& info) noexcept {
    timespec sinceBoot{};
    ::clock_gettime(CLOCK_BOOTTIME, &sinceBoot);
    out.text("time ").decimal(std::time(nullptr)).endLine();
    out.text("uptime ").decimal(sinceBoot.tv_sec).endLine();
    out.text("signal ").decimal(info.si_signo).endLine();
    out.text("code ").decimal(info.si_code).endLine();
    if (info.si_code > 0)
        out.text("address ").hex(reinterpret_cast<std::uint64_t>(info.si_addr)).endLine();
    std::array<char, 17> name{};
    ::prctl(PR_GET_NAME, name.data());
    out.text("thread ").decimal(::gettid()).text(" ").oneLine(name.data()).endLine();
}

void writeTexts(CrashWriter& out) noexcept {
    if (const std::string_view type = lastExceptionType(); !type.empty())
        out.text("exception ").oneLine(type).endLine();
    if (const std::string_view text = lastExceptionText(); !text.empty())
        out.text("message ").oneLine(text).endLine();
    std::array<char, 400> line{};
    if (const std::size_t length = copyLastLine(line); length != 0)
        out.text("log ").oneLine({line.data(), length}).endLine();
}

/// The riskiest comes last: what is written by then stays.
void write(const siginfo_t& info, ucontext_t& state) noexcept {
    const CrashContext context(state, info);
    CrashWriter out(record->descriptor());
    writeCause(out, info);
    context.writeRegisters(out);
    out.flush();
    writeTexts(out);
    writeMemoryMap(out, {context.stackPointer(), reinterpret_cast<std::uint64_t>(info.si_addr)});
    context.writeFrames(out);
    out.text(crashRecordEnd).endLine().flush();
}

/// In any thread: the kernel chooses. The dying one gives up.
void tookTooLong(int signal) {
    const pid_t dying = dyingThread.load();
    if (dying != ::gettid())
        ::syscall(SYS_tgkill, process, dying, signal);
    else if (hasWayOut != 0)
        ::siglongjmp(wayOut, signal);
}

void limitTime() noexcept {
    struct sigaction action {};
    action.sa_handler = &tookTooLong;
    action.sa_flags = SA_ONSTACK;
    ::sigaction(SIGALRM, &action, nullptr);
    sigset_t alarms;
    ::sigemptyset(&alarms);
    ::sigaddset(&alarms, SIGALRM);
    ::pthread_sigmask(SIG_UNBLOCK, &alarms, nullptr);
    ::alarm(longestWriting);
}

void writeInTime(const siginfo_t& info, ucontext_t& state) noexcept {
    if (!record->isIntact())
        return;
    if (sigsetjmp(wayOut, 1) == 0) {
        hasWayOut = 1;
        limitTime();
        write(info, state);
    }
    hasWayOut = 0;
    ::alarm(0);
    record->publish();
}

void restoreEarlier(int signal) noexcept {
    for (std::size_t i = 0; i < std::size(faults); ++i) {
        if (faults[i] == signal)
            ::sigaction(signal, &earlier[i], nullptr);
    }
}

/// Whether the instruction that has failed does so again when the handler returns.
bool comesAgain(const siginfo_t& info) noexcept {
    switch (info.si_signo) {
    case SIGSEGV:
    case SIGILL:
    case SIGFPE:
        return info.si_code > 0;
    case SIGBUS:
        return info.si_code > 0 && info.si_code != BUS_MCEERR_AO;
    default:
        return false;
    }
}

/// The same signal with the same details, for the earlier handler, once this one has returned.
void sendAgain(siginfo_t& info) noexcept {
    sigset_t same;
    ::sigemptyset(&same);
    ::sigaddset(&same, info.si_signo);
    ::pthread_sigmask(SIG_BLOCK, &same, nullptr);
    if (::syscall(SYS_rt_tgsigqueueinfo, ::getpid(), ::gettid(), info.si_signo, &info) != 0)
        ::syscall(SYS_tgkill, ::getpid(), ::gettid(), info.si_signo);
}

void awaitDeath() noexcept {
    constexpr timespec aWhile{0, 10'000'000};
    while (!isWritten.load())
        ::nanosleep(&aWhile, nullptr);
}

/// True if this thread is to write. The others wait; a handler that has failed itself goes on at
/// the way out, if there still is one.
bool isFirstToDie() noexcept {
    pid_t nobody = 0;
    const pid_t thread = ::gettid();
    if (dyingThread.compare_exchange_strong(nobody, thread))
        return true;
    if (nobody == thread && hasWayOut != 0)
        ::siglongjmp(wayOut, 1);
    if (nobody != thread)
        awaitDeath();
    return false;
}

void handle(int signal, siginfo_t* info, void* state) {
    const int error = errno;
    // A child of ours that has started no program yet has no record.
    if (::getpid() == process && isFirstToDie()) {
        writeInTime(*info, *static_cast<ucontext_t*>(state));
        isWritten.store(true);
    }
    restoreEarlier(signal);
    if (!comesAgain(*info))
        sendAgain(*info);
    errno = error;
}

/// A signal that the program ignores does not end it.
void takeSignals() noexcept {
    struct sigaction action {};
    action.sa_sigaction = &handle;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
    for (std::size_t i = 0; i < std::size(faults); ++i) {
        ::sigaction(faults[i], nullptr, &earlier[i]);
        if ((earlier[i].sa_flags & SA_SIGINFO) != 0 || earlier[i].sa_handler != SIG_IGN)
            ::sigaction(faults[i], &action, nullptr);
    }
}

bool isDebugged() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.starts_with("TracerPid:"))
            return line.find_first_of("123456789") != std::string::npos;
    }
    return false;
}

/// Why there is no record.
std::string& failure() {
    static std::string text;
    return text;
}

void discardAtExit() noexcept {
    if (::getpid() == process && !isWritten.load())
        record->discard();
}

} // namespace

CrashHandling handleCrashes(const CrashProgram& program, const std::string& folder) {
    if (isSanitized || record != nullptr || isDebugged() || !isCrashWritingOn(folder))
        return CrashHandling::off;
    if (isCrashLoop(folder, program.name, std::chrono::system_clock::now()))
        return CrashHandling::silenced;
    if (folder.empty())
        return CrashHandling::impossible; // nobody has a home
    try {
        record = std::make_unique<CrashRecord>(folder, program).release();
    } catch (const std::system_error& error) {
        failure() = error.what();
        return CrashHandling::impossible;
    }
    process = ::getpid();
    std::atexit(&discardAtExit);
    std::array<void*, 2> none{};
    ::backtrace(none.data(), static_cast<int>(none.size())); // loads what it needs
    [[maybe_unused]] const auto* const kept = std::make_unique<AlternateStack>().release();
    keepLastException();
    takeSignals();
    return CrashHandling::on;
}

void reserveCrashRoom() {
    if (!failure().empty())
        systemLog(LogPriority::warning, "No crash could be reported: %s", failure().c_str());
    else if (record != nullptr && !record->reserve())
        systemLog(LogPriority::warning, "There may be no room for the report of a crash: %s",
                  std::strerror(errno));
}

} // namespace platform
