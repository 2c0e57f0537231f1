// dying_program FOLDER|- MANNER: dies in that manner. With a folder it handles crashes, and leaves
// its record there.

#include "framework/async/queue.h"
#include "platform/base/SystemLog.h"
#include "platform/base/ThreadCalls.h"
#include "platform/crash/CrashHandler.h"
#include "platform/loop/DispatchQueue.h"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <fstream>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <sys/mman.h>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>

namespace {

constexpr std::size_t pageSize = 4096;

struct Abstract {
    explicit Abstract(bool calls) {
        if (calls)
            callUnfinished();
    }
    virtual ~Abstract() = default;
    virtual void unfinished() = 0;
    void callUnfinished() { unfinished(); }
};

struct Concrete final : Abstract {
    Concrete() : Abstract(true) {}
    void unfinished() override {}
};

struct FaultInTheLog final : platform::SystemLogSink {
    ~FaultInTheLog() override { end(); }
    void line(platform::LogPriority priority, std::string_view text) noexcept override;
};

volatile int zero = 0;
volatile int* volatile nowhere = nullptr;
std::atomic<bool> hangs{false};

} // namespace

// What the tests look for in the reports.
extern "C" {

/// In place of the C library's, which the handler calls.
int backtrace(void** frames, int size) noexcept {
    while (hangs)
        ::pause();
    using Function = int (*)(void**, int);
    static const auto next = reinterpret_cast<Function>(::dlsym(RTLD_NEXT, "backtrace"));
    return next(frames, size);
}

[[gnu::noinline]] void dieOfBadAccess() {
    *nowhere = 1;
}

[[gnu::noinline]] void dieOfShortFile() {
    char name[] = "/tmp/shortXXXXXX";
    const int file = ::mkstemp(name);
    ::unlink(name);
    void* const memory = ::mmap(nullptr, pageSize, PROT_READ, MAP_SHARED, file, 0);
    zero = *static_cast<volatile const unsigned char*>(memory);
}

[[gnu::noinline]] void dieOfDivision() {
    zero = 100 / zero;
}

[[gnu::noinline]] void dieOfBadInstruction() {
    __builtin_trap();
}

[[gnu::noinline]] void dieOfBreakpoint() {
    std::raise(SIGTRAP);
}

[[gnu::noinline]] void dieOfSystemCall() {
    std::raise(SIGSYS);
}

[[gnu::noinline]] void dieOfCallToNowhere() {
    reinterpret_cast<void (*)()>(const_cast<int*>(nowhere))();
    zero = 1; // so that the call returns here
}

[[gnu::noinline]] void dieOfSentSignal() {
    ::kill(::getpid(), SIGSEGV);
    while (true)
        ::pause();
}

[[gnu::noinline]] void dieOfAbort() {
    std::abort();
}

[[gnu::noinline]] void dieOfException() {
    throw std::runtime_error("the text\nof it");
}

[[gnu::noinline]] void dieOfNumber() {
    throw 42;
}

[[gnu::noinline]] void dieOfException2() noexcept {
    dieOfException();
}

[[gnu::noinline]] void dieOfPureCall() {
    const Concrete object;
}

[[gnu::noinline]] int dieOfOverflow(int depth) {
    volatile char some[1000] = {};
    some[0] = static_cast<char>(depth);
    return depth < 0 ? some[0] : dieOfOverflow(depth + 1) + some[0];
}

/// With the allocator's lock held: it follows a link that has been overwritten.
[[gnu::noinline]] void dieInMalloc() {
    std::thread([] { ::pause(); }).detach(); // else it takes no lock
    constexpr std::size_t size = 5000;       // not kept by the thread
    auto** volatile links = static_cast<void**>(std::malloc(size));
    void* volatile neighbour = std::malloc(size);
    std::free(static_cast<void*>(links));
    void** volatile dangling = links;
    dangling[1] = reinterpret_cast<void*>(0x10);
    void* volatile more = std::malloc(2 * size);
    zero = more == neighbour ? 1 : 2;
}

[[gnu::noinline]] void dieWithBadStack() {
#if defined(__x86_64__)
    asm volatile("movq $16, %rsp\n\tmovq (%rsp), %rax");
#else
    asm volatile("mov sp, 16\n\tldr x0, [sp]");
#endif
}
}

namespace {

void FaultInTheLog::line(platform::LogPriority, std::string_view) noexcept {
    dieOfBadAccess();
}

void inThread(const std::function<void()>& work) {
    platform::startDetachedThread("dying", work);
    while (true)
        ::pause();
}

void dieInPool() {
    QN::async::queue queue("dying", false, 0);
    queue.enqueue([] { zero = dieOfOverflow(0); });
    while (true)
        ::pause();
}

void dieInDispatchQueue() {
    platform::DispatchQueue::global()->async([] { zero = dieOfOverflow(0); });
    while (true)
        ::pause();
}

void dieOfTwo() {
    static std::atomic<int> ready{0};
    const auto die = [] {
        ++ready;
        while (ready < 2) {
        }
        dieOfBadAccess();
    };
    std::thread(die).detach();
    die();
}

void dieInTheLog() {
    const FaultInTheLog sink;
    platform::systemLog(platform::LogPriority::info, "the last line");
}

/// The disk of that folder becomes full once the program runs.
void dieOnFullDisk(const std::string& folder) {
    std::ofstream filler(folder + "/filler");
    while (filler << 'x' << std::flush) {
    }
    dieOfBadAccess();
}

const std::map<std::string, std::function<void()>> manners{
    {"access", dieOfBadAccess},
    {"shortFile", dieOfShortFile},
    {"division", dieOfDivision},
    {"instruction", dieOfBadInstruction},
    {"breakpoint", dieOfBreakpoint},
    {"systemCall", dieOfSystemCall},
    {"nowhere", dieOfCallToNowhere},
    {"sent", dieOfSentSignal},
    {"abort", dieOfAbort},
    {"exception", dieOfException},
    {"number", dieOfNumber},
    {"noexcept", dieOfException2},
    {"threadException", [] { inThread(dieOfException); }},
    {"pure", dieOfPureCall},
    {"overflow", [] { zero = dieOfOverflow(0); }},
    {"threadOverflow", [] { inThread([] { zero = dieOfOverflow(0); }); }},
    {"standardThreadOverflow", [] { std::thread([] { zero = dieOfOverflow(0); }).join(); }},
    {"poolOverflow", dieInPool},
    {"queueOverflow", dieInDispatchQueue},
    {"malloc", dieInMalloc},
    {"log", dieInTheLog},
    {"two", dieOfTwo},
    {"badStack", dieWithBadStack},
    {"hang",
     [] {
         hangs = true;
         inThread(dieOfBadAccess);
     }},
    {"killed", [] { ::raise(SIGKILL); }},
    {"exit", [] { std::exit(7); }},
};

/// What another library might have installed before.
void endInstead(int /*signal*/) {
    ::_exit(42);
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 3)
        return 2;
    constexpr rlimit none{0, 0};
    ::setrlimit(RLIMIT_CORE, &none);
    const std::string folder = argv[1];
    if (argc > 3)
        std::signal(SIGSEGV, &endInstead);
    if (folder != "-") {
        const auto handling = platform::handleCrashes(
            {.name = "dying_program", .version = "1.2", .build = "abc"}, folder);
        std::printf("%d\n", static_cast<int>(handling));
        std::fflush(stdout);
        platform::reserveCrashRoom();
    }
    const std::string manner = argv[2];
    if (manner == "fullDisk")
        dieOnFullDisk(folder);
    manners.at(manner)();
    return 0;
}
