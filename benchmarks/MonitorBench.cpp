#include "Harness.h"

#include "framework/monitor/QNItemContentChangeMonitor.h"
#include "framework/monitor/RLBGTimer.h"

#include "platform/base/FileDescriptor.h"
#include "platform/loop/DispatchQueue.h"

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <malloc.h>
#include <mutex>
#include <stdexcept>
#include <sys/inotify.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using Monitor = QNItemContentChangeMonitor;
using platform::FileDescriptor;
using Clock = std::chrono::steady_clock;

constexpr std::size_t writes = 2000;
constexpr std::size_t observerCount = 10000;
constexpr std::size_t requests = 100000;

class Folder {
  public:
    Folder() {
        std::string name = std::filesystem::temp_directory_path() / "monitor-XXXXXX";
        if (::mkdtemp(name.data()) == nullptr)
            throw std::runtime_error("no temporary folder");
        path_ = name;
    }
    ~Folder() { std::filesystem::remove_all(path_); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string makeFile(std::size_t number) const {
        std::string file = path_ / std::to_string(number);
        std::ofstream(file).flush();
        return file;
    }

  private:
    std::filesystem::path path_;
};

/// The time from a write to the handler that it causes.
class Latency {
  public:
    void handlerCalled() {
        called_ = Clock::now();
        ++calls_;
        calls_.notify_one();
    }

    /// Microseconds, the mean of many single writes.
    double measure(const std::string& file) {
        const FileDescriptor opened(::open(file.c_str(), O_WRONLY | O_CLOEXEC));
        std::chrono::duration<double, std::micro> sum{};
        for (unsigned i = 0; i < writes; ++i) {
            const auto start = Clock::now();
            if (::pwrite(opened.get(), "x", 1, 0) != 1)
                throw std::runtime_error("cannot write");
            calls_.wait(i);
            sum += called_ - start;
        }
        return sum.count() / writes;
    }

  private:
    Clock::time_point called_;
    std::atomic<unsigned> calls_ = 0;
};

double latencyOurs() {
    const Folder folder;
    const std::string file = folder.makeFile(0);
    const auto queue = platform::DispatchQueue::makeSerial("com.quarnel.bench");
    Latency latency;
    const auto observer = Monitor::addObserverForPath(
        file, queue, [&](const WatchedItem&, auto) { latency.handlerCalled(); });
    const double result = latency.measure(file);
    Monitor::removeObserver(observer);
    queue->sync([] {});
    return result;
}

/// One thread that does what is posted to it.
class Worker {
  public:
    Worker() : thread_([this] { work(); }) {}
    ~Worker() {
        post({});
        thread_.join();
    }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    void post(std::function<void()> job) {
        {
            const std::lock_guard lock(mutex_);
            jobs_.push_back(std::move(job));
        }
        changed_.notify_one();
    }

  private:
    void work() {
        for (;;) {
            std::unique_lock lock(mutex_);
            changed_.wait(lock, [this] { return !jobs_.empty(); });
            const auto job = std::move(jobs_.front());
            jobs_.pop_front();
            lock.unlock();
            if (!job)
                return;
            job();
        }
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> jobs_; // guarded by mutex_
    std::thread thread_;
};

double latencyInotify() {
    const Folder folder;
    const std::string file = folder.makeFile(0);
    const FileDescriptor inotify(::inotify_init1(IN_CLOEXEC));
    const int watch = ::inotify_add_watch(inotify.get(), file.c_str(), IN_MODIFY);
    Latency latency;
    Worker worker;
    std::thread reader([&] {
        alignas(inotify_event) std::array<char, 4096> events{};
        for (;;) {
            const ssize_t size = ::read(inotify.get(), events.data(), events.size());
            const auto* const event = reinterpret_cast<const inotify_event*>(events.data());
            if (size <= 0 || (event->mask & IN_IGNORED) != 0)
                return;
            worker.post([&] { latency.handlerCalled(); });
        }
    });
    const double result = latency.measure(file);
    ::inotify_rm_watch(inotify.get(), watch);
    reader.join();
    return result;
}

/// Many observers, each of a file of its own.
class Crowd {
  public:
    Crowd() {
        for (std::size_t i = 0; i < observerCount; ++i)
            files_.push_back(folder_.makeFile(i));
        observers_.reserve(observerCount + 1);
    }

    void add() {
        for (const std::string& file : files_)
            observers_.push_back(
                Monitor::addObserverForPath(file, queue_, [](const WatchedItem&, auto) {}));
        // Adding ends on the monitor's queue, which deals with this after that.
        std::atomic<bool> added = false;
        observers_.push_back(Monitor::addObserverForPath(
            files_.front(), queue_, [&](const WatchedItem&, auto) { added = true; }));
        Monitor::triggerChangeForItem(WatchedItem::path(files_.front()));
        while (!added)
            std::this_thread::yield();
    }

    /// Returns when all have been released.
    void remove() {
        std::vector<std::weak_ptr<QNItemContentChangeProxy>> removed(observers_.begin(),
                                                                     observers_.end());
        for (const auto& observer : observers_)
            Monitor::removeObserver(observer);
        observers_.clear();
        for (const auto& each : removed) {
            while (!each.expired())
                std::this_thread::yield();
        }
    }

  private:
    const Folder folder_;
    const std::shared_ptr<platform::DispatchQueue> queue_ =
        platform::DispatchQueue::makeSerial("com.quarnel.bench");
    std::vector<std::string> files_;
    std::vector<Monitor::Observer> observers_;
};

double addAndRemove() {
    Crowd crowd;
    return bench::nanosecondsEach(1,
                                  [&] {
                                      crowd.add();
                                      crowd.remove();
                                  }) /
           1e6;
}

/// What the program's heap grows by; the kernel's share comes on top.
double memoryOfObserver() {
    Crowd crowd;
    const auto before = ::mallinfo2();
    crowd.add();
    const auto after = ::mallinfo2();
    crowd.remove();
    const auto bytes = [](const struct mallinfo2& heap) {
        return static_cast<double>(heap.uordblks + heap.hblkhd);
    };
    return (bytes(after) - bytes(before)) / observerCount;
}

double requestOnPendingTimer(std::uint32_t behavior) {
    RLBGTimer timer(nullptr, behavior, "com.rlwork.RLBGTimer");
    timer.afterDelay(3600, [](void*) {});
    return bench::nanosecondsEach(requests, [&] {
        for (std::size_t i = 0; i < requests; ++i)
            timer.afterDelay(3600, [](void*) {});
    });
}

[[maybe_unused]] const bool added[] = {
    bench::addFigure({"monitor/latency", "from a write to the handler", "us", &latencyOurs,
                      "inotify thread, worker", &latencyInotify}),
    bench::addFigure({"monitor/10000/add-remove", "adding and removing 10000 observers of files",
                      "ms", &addAndRemove, "", nullptr}),
    bench::addFigure({"monitor/10000/memory", "heap of one of 10000 observers", "bytes",
                      &memoryOfObserver, "", nullptr}),
    bench::addFigure({"timer/request", "afterDelay on a pending timer", "ns",
                      [] { return requestOnPendingTimer(RLBGTimerCoalesce); }, "", nullptr}),
    bench::addFigure({"timer/request/delay", "the same, each request putting the run off", "ns",
                      [] { return requestOnPendingTimer(RLBGTimerDelay); }, "", nullptr}),
};

} // namespace
