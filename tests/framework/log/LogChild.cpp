// What cannot be tested in the test's own process. log_child WHAT PATH does one thing with a log at
// PATH and ends with status 0 when it went as it should.
#include "framework/async/queue.h"
#include "framework/log/OpenLogs.h"
#include "framework/log/qnlog.h"
#include "framework/log/qnlog_handle.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>
#include <string_view>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

std::atomic<std::size_t> largestAllocation{SIZE_MAX};

/// Forks while the writer writes or lingers, or none is there.
int forkAndLog(const char* path) {
    qnlog_handle* const log = qnlog_open(path, 0);
    for (int i = 0; i < 20; ++i) {
        qnlog_msg(log, qnlog_information, "parent");
        std::this_thread::sleep_for(std::chrono::microseconds(200 * i));
        const pid_t child = ::fork();
        if (child == 0) {
            ::alarm(20);
            qnlog_msg(log, qnlog_information, "child");
            qnlog_setlevel(log, qnlog_debug);
            qnlog_close(log);
            std::exit(qnlog_open(path, QNLOG_ROTATE) ? 1 : 0);
        }
        int status = -1;
        ::waitpid(child, &status, 0);
        if (status != 0)
            return 1;
    }
    qnlog_close(log);
    return 0;
}

/// Logs when it is destroyed, to all of them, and closes the last.
struct StaticObject {
    const char* text;
    std::vector<qnlog_handle*> logs = {};
    ~StaticObject() {
        for (qnlog_handle* const log : logs)
            qnlog_msg(log, qnlog_information, "%s", text);
        if (!logs.empty())
            qnlog_close(logs.back());
    }
};
StaticObject firstMade{"of the last static object"};

qnlog_handle* hangingLog(const char* path) {
    qnlog_handle* const log = qnlog_open(path, 0);
    for (int i = 0; i < 2000; ++i)
        qnlog_msg(log, qnlog_error, "line %d of what a FIFO has no room for", i);
    return log;
}

/// Ends with all threads of the pool busy, with logs whose disk hangs, at several stages of their
/// lives, and one whose does not.
void prepareHardEnd(const char* path) {
    static auto& busy = *new QN::async::queue("busy", false, -254);
    for (int i = 0; i < 100; ++i)
        busy.enqueue([] { std::this_thread::sleep_for(std::chrono::minutes(1)); });
    static qnlog_handle* const good = qnlog_open((std::string(path) + ".good").c_str(), 0);
    for (int i = 0; i < 1000; ++i)
        qnlog_msg(good, qnlog_information, "line %d", i);
    firstMade.logs = {good, hangingLog(path)};
    static const StaticObject lastMade{"of the first static object", {good, hangingLog(path)}};
    std::atexit([] { qnlog_msg(good, qnlog_information, "at exit"); });
    std::thread([log = hangingLog(path)] { qnlog_close(log); }).detach();
}

int endFromAnotherThread(const char* path) {
    std::thread([path] {
        prepareHardEnd(path);
        std::exit(0);
    }).join();
    return 1;
}

/// The end waits for all that is logged, since it has the patience.
int endSlowly(const char* path) {
    QN::log::OpenLogs::instance().setPatience(std::chrono::hours(1));
    firstMade.logs = {qnlog_open((std::string(path) + ".good").c_str(), 0), hangingLog(path)};
    std::thread([log = hangingLog(path)] { qnlog_close(log); }).detach();
    std::atexit([] {
        std::puts("ends");
        std::fflush(stdout);
    });
    return 0;
}

/// Once without memory for the caller's copy, once without memory for the line.
int runOutOfMemory(const char* path) {
    qnlog_handle* const log = qnlog_open(path, 0);
    qnlog_msg(log, qnlog_information, "before");
    log->flush();
    const std::string big(100'000, 'x');
    largestAllocation = big.size() / 2;
    qnlog_msg(log, qnlog_information, "%s", big.c_str());
    qnlog_msg(log, qnlog_information, "%d%s", 1, big.c_str());
    log->flush();
    const std::string small(30'000, 'x'); // has room where messages wait
    largestAllocation = small.size() / 2;
    qnlog_msg(log, qnlog_information, "%s", small.c_str());
    log->flush();
    qnlog_msg(log, qnlog_information, "after");
    qnlog_close(log);
    return 0;
}

} // namespace

[[gnu::noinline]] void* operator new(std::size_t size) {
    void* const memory = size <= largestAllocation ? std::malloc(size) : nullptr;
    if (!memory)
        throw std::bad_alloc();
    return memory;
}

[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

int main(int argc, char** argv) {
    const std::string_view what = argc == 3 ? argv[1] : "";
    if (what == "return" || what == "exit")
        prepareHardEnd(argv[2]);
    if (what == "exit")
        std::exit(0);
    if (what == "return")
        return 0;
    if (what == "exit of a thread")
        return endFromAnotherThread(argv[2]);
    if (what == "slow end")
        return endSlowly(argv[2]);
    if (what == "fork")
        return forkAndLog(argv[2]);
    if (what == "no-memory")
        return runOutOfMemory(argv[2]);
    std::fprintf(stderr, "usage: log_child WHAT PATH\n");
    return 2;
}
