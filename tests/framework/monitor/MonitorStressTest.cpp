#include "MonitorFixture.h"

#include "support/SystemLogRecorder.h"

#include <random>
#include <stdexcept>
#include <thread>

namespace {

using Monitor = QNItemContentChangeMonitor;

/// Adds and removes observers of a few files, in all ways, while others change these.
class Churn {
  public:
    Churn(std::vector<std::string> files, std::vector<Monitor::Queue> queues, unsigned seed)
        : files_(std::move(files)), queues_(std::move(queues)), random_(seed) {}

    void observe(int rounds) {
        for (int i = 0; i < rounds; ++i) {
            if (observers_.size() < 20 && chance(2))
                add();
            else if (!observers_.empty())
                removeOne();
            if (chance(20))
                Monitor::removeAllObserversUsingQueue(oneOf(queues_));
            if (chance(4))
                Monitor::triggerChangeForItem(WatchedItem::path(oneOf(files_)));
        }
        while (!observers_.empty())
            removeOne();
    }

    void change(int rounds) {
        for (int i = 0; i < rounds; ++i) {
            const std::string& file = oneOf(files_);
            std::error_code ignored; // another thread may have been here first
            switch (random_() % 5) {
            case 0:
                fs::remove(file, ignored);
                break;
            case 1:
                fs::rename(file, oneOf(files_), ignored);
                break;
            case 2:
                fs::rename(file, file + ".away", ignored);
                break;
            default:
                std::ofstream(file, std::ios::app) << "x";
            }
        }
    }

    /// Whether all observers that there ever were have been released.
    bool allReleased() const {
        return std::all_of(all_.begin(), all_.end(), [](auto& each) { return each.expired(); });
    }

  private:
    void add() {
        const auto habit = random_() % 4;
        const auto observer =
            Monitor::addObserverForPath(oneOf(files_), oneOf(queues_), [habit](auto&, auto) {
                if (habit == 0)
                    throw std::runtime_error("from a handler");
            });
        observer->setContentChangeCoalesceInterval(chance(2) ? 0.001 : 0);
        all_.push_back(observer);
        observers_.push_back(observer);
    }

    void removeOne() {
        std::swap(observers_[random_() % observers_.size()], observers_.back());
        Monitor::removeObserver(observers_.back());
        observers_.pop_back();
    }

    bool chance(unsigned oneIn) { return random_() % oneIn == 0; }

    template <typename T>
    const T& oneOf(const std::vector<T>& all) {
        return all[random_() % all.size()];
    }

    const std::vector<std::string> files_;
    const std::vector<Monitor::Queue> queues_;
    std::mt19937 random_;
    std::vector<Monitor::Observer> observers_;
    std::vector<std::weak_ptr<QNItemContentChangeProxy>> all_;
};

} // namespace

TEST_F(MonitorTest, ObserversComeAndGoWhileFilesChange) {
    const support::SystemLogRecorder log;
    const std::vector<std::string> files = {makeFile("a"), makeFile("b"), makeFile("c"),
                                            makeFolder("d"), path("")};
    const std::vector<Monitor::Queue> queues = {
        queue, platform::DispatchQueue::makeSerial("com.quarnel.test.other"),
        platform::DispatchQueue::global(), nullptr};
    const std::ptrdiff_t descriptors = openDescriptors();
    std::vector<Churn> churns;
    for (unsigned seed = 1; seed <= 5; ++seed)
        churns.emplace_back(files, queues, seed);
    std::vector<std::thread> threads;
    std::atomic<int> atWork = 0;
    for (std::size_t i = 0; i < churns.size(); ++i) {
        ++atWork;
        threads.emplace_back([&, i] {
            if (i < 3)
                churns[i].observe(1500);
            else
                churns[i].change(3000);
            --atWork;
        });
    }
    const auto drained = [&](const std::function<bool()>& condition) {
        return support::waitUntil([&] {
            platform::drainMainQueue();
            return condition();
        });
    };
    EXPECT_TRUE(drained([&] { return atWork == 0; }));
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_TRUE(drained([&] {
        return std::all_of(churns.begin(), churns.end(),
                           [](const Churn& each) { return each.allReleased(); });
    }));
    EXPECT_EQ(openDescriptors(), descriptors);
    EXPECT_TRUE(log.contains("from a handler"));
    queue->sync([] {});
}
