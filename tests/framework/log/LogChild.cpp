// What cannot be tested in the test's own process. log_child WHAT PATH does one thing with a log at
// PATH and ends with status 0 when it went as it should.
#include "framework/async/queue.h"
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

/// Logs when it is destroyed, which is after what happens at exit.
struct LastMessage {
    qnlog_handle* log = nullptr;
    ~LastMessage() {
        if (log)
            qnlog_msg(log, qnlog_information, "of a static object");
    }
};
LastMessage lastMessage;

/// Ends with all threads of the pool busy, a log whose disk hangs and one whose does not.
int endWhilePoolIsBusy(const char* path) {
    static auto& busy = *new QN::async::queue("busy", false, -254);
    for (int i = 0; i < 100; ++i)
        busy.enqueue([] { std::this_thread::sleep_for(std::chrono::minutes(1)); });
    static qnlog_handle* const hanging = qnlog_open(path, 0);
    for (int i = 0; i < 10'000; ++i)
        qnlog_msg(hanging, qnlog_error, "line %d", i);
    qnlog_handle* const good = qnlog_open((std::string(path) + ".good").c_str(), 0);
    for (int i = 0; i < 1000; ++i)
        qnlog_msg(good, qnlog_information, "line %d", i);
    lastMessage.log = good;
    std::exit(hanging && good ? 0 : 1);
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
    if (what == "exit")
        return endWhilePoolIsBusy(argv[2]);
    if (what == "fork")
        return forkAndLog(argv[2]);
    if (what == "no-memory")
        return runOutOfMemory(argv[2]);
    std::fprintf(stderr, "usage: log_child WHAT PATH\n");
    return 2;
}
