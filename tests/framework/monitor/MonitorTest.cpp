#include "MonitorFixture.h"
#include "framework/monitor/QNItemContentChangeMonitor.h"

#include "support/ManualClock.h"
#include "support/SystemLogRecorder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

using namespace std::chrono_literals;
using Monitor = QNItemContentChangeMonitor;
using Kinds = std::vector<QNItemContentChangeKind>;
using platform::FileDescriptor;

namespace {

constexpr auto changed = QNItemContentChanged;
constexpr auto gone = QNItemGone;
constexpr auto notMonitored = QNItemNotMonitored;

FileDescriptor openedForReading(const std::string& path) {
    return FileDescriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
}

} // namespace

TEST_F(MonitorTest, TellsEachWriteOnTheObserversQueueUntilItIsRemoved) {
    const std::string file = makeFile("file");
    std::atomic<int> calls = 0;
    const auto observer =
        Monitor::addObserverForPath(file, queue, [&](const WatchedItem& item, auto kind) {
            EXPECT_TRUE(queue->isCurrent());
            EXPECT_EQ(item, WatchedItem::path(file));
            EXPECT_EQ(kind, changed);
            ++calls;
        });
    for (int i = 1; i <= 3; ++i) {
        append(file);
        EXPECT_TRUE(support::waitUntil([&] { return calls == i; }));
    }
    Monitor::removeObserver(observer);
    append(file);
    settle();
    EXPECT_EQ(calls, 3);
}

// "held": somebody has the file open, so that it is not destroyed when its last name goes.
TEST_F(MonitorTest, TellsOnceWhenAFileLosesItsName) {
    const struct {
        const char* name;
        bool held;
        std::function<void(const std::string&)> act;
    } cases[] = {
        {"deleted", false, [](auto& file) { fs::remove(file); }},
        {"deleted, held", true, [](auto& file) { fs::remove(file); }},
        {"renamed", false, [](auto& file) { fs::rename(file, file + ".away"); }},
        {"replaced", false, [&](auto& file) { fs::rename(makeFile("new"), file); }},
        {"replaced, held", true, [&](auto& file) { fs::rename(makeFile("new"), file); }},
        {"deleted, has another name", false,
         [](auto& file) {
             fs::create_hard_link(file, file + ".other");
             fs::remove(file);
         }},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.name);
        const std::string file = makeFile("file");
        const FileDescriptor holder = each.held ? openedForReading(file) : FileDescriptor();
        const Watch watch(WatchedItem::path(file), queue);
        each.act(file);
        settle();
        EXPECT_EQ(watch.kinds(), Kinds{gone});
    }
}

TEST_F(MonitorTest, AFoldersContentIsItsEntries) {
    const struct {
        const char* name;
        std::function<void(const std::string&)> act;
        QNItemContentChangeKind kind; // 0: none
    } cases[] = {
        {"file added", [](auto& folder) { append(folder + "/new"); }, changed},
        {"folder added", [](auto& folder) { fs::create_directory(folder + "/new"); }, changed},
        {"removed", [](auto& folder) { fs::remove(folder + "/entry"); }, changed},
        {"renamed", [](auto& f) { fs::rename(f + "/entry", f + "/other"); }, changed},
        {"moved out", [](auto& f) { fs::rename(f + "/entry", f + ".moved"); }, changed},
        {"entry written to", [](auto& f) { append(f + "/entry"); }, QNItemContentChangeKind{}},
        {"mode changed", [](auto& f) { ::chmod(f.c_str(), 0750); }, QNItemContentChangeKind{}},
        {"folder renamed", [](auto& folder) { fs::rename(folder, folder + ".away"); }, gone},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.name);
        const std::string folder = makeFolder("folder");
        append(folder + "/entry");
        const Watch watch(WatchedItem::path(folder), queue);
        each.act(folder);
        settle();
        if (each.kind == QNItemContentChangeKind{})
            EXPECT_EQ(watch.kinds(), Kinds{});
        else // a renaming inside may be told as one change or as two
            EXPECT_TRUE(!watch.kinds().empty() && watch.count(each.kind) == watch.kinds().size());
    }
}

TEST_F(MonitorTest, ARemovedFolderIsReportedGoneEvenIfItIsAWorkingDirectory) {
    const std::string folder = makeFolder("folder");
    FileDescriptor holder = openedForReading(folder);
    const Watch byName(WatchedItem::path(folder), queue);
    const Watch byDescriptor(WatchedItem::descriptor(holder.get()), queue);
    fs::remove(makeFolder("sibling")); // concerns nobody
    fs::remove(folder);
    settle();
    EXPECT_EQ(byDescriptor.kinds(), Kinds{gone});
    holder.reset(); // now it is destroyed, which has been told
    settle();
    EXPECT_EQ(byName.kinds(), Kinds{gone});
}

TEST_F(MonitorTest, ADescriptorsFileIsReportedGoneWithItsLastNameAndTheDescriptorStaysOpen) {
    const std::string file = makeFile("file");
    const FileDescriptor opened = openedForReading(file);
    {
        const Watch watch(WatchedItem::descriptor(opened.get()), queue);
        append(file);
        fs::create_hard_link(file, file + ".other");
        fs::remove(file);
        settle();
        EXPECT_EQ(watch.kinds(), Kinds{changed}); // it has a name still
        fs::remove(file + ".other");
        settle();
        EXPECT_EQ(watch.kinds(), (Kinds{changed, gone}));
    }
    EXPECT_NE(::fcntl(opened.get(), F_GETFD), -1);
}

TEST_F(MonitorTest, RefusesArgumentsThatNameNoItem) {
    using Refusal = std::invalid_argument;
    for (const char* const path : {"", "relative/path"})
        EXPECT_THROW(Monitor::addObserverForPath(path, queue, {}), Refusal) << path;
    for (const char* const url : {"", "/no/url", "http://localhost/file"})
        EXPECT_THROW(Monitor::addObserverForItem(url, queue, {}), Refusal) << url;
    EXPECT_THROW(Monitor::addObserverForFileDescriptor(-1, queue, {}), Refusal);
}

TEST_F(MonitorTest, TellsOnceThatAnItemCannotBeMonitoredAndForgetsTheObserverWhenAsked) {
    const WatchedItem items[] = {
        {},
        WatchedItem::path(path("missing")),
        WatchedItem::path(path("missing").append(1, '\0')),
        WatchedItem::url("http://localhost/"),
        WatchedItem::url("file://" + path("100%")),
        WatchedItem::descriptor(openedForReading(makeFile("closed")).get()),
    };
    for (const WatchedItem& item : items) {
        SCOPED_TRACE(item.description());
        const Watch watch(item, queue);
        settle();
        EXPECT_EQ(watch.kinds(), Kinds{notMonitored});
    }
}

TEST_F(MonitorTest, ATriggeredChangeGoesToAllObserversOfAnEqualItem) {
    const WatchedItem item = WatchedItem::path(makeFile("file"));
    const auto otherQueue = platform::DispatchQueue::makeSerial("com.quarnel.test.other");
    const Watch own(item, queue);
    const Watch others(item, otherQueue);
    const Watch unequal(WatchedItem::url("file://" + path("file")), queue);
    Monitor::triggerChangeForItem(item);
    EXPECT_TRUE(support::waitUntil(
        [&] { return own.kinds() == Kinds{changed} && others.kinds() == Kinds{changed}; }));
    EXPECT_EQ(unequal.kinds(), Kinds{});
}

TEST_F(MonitorTest, RemovesAllObserversOfOneQueue) {
    const std::string file = makeFile("file");
    const auto otherQueue = platform::DispatchQueue::makeSerial("com.quarnel.test.other");
    const Watch left(WatchedItem::path(file), queue);
    Calls others;
    const std::weak_ptr<QNItemContentChangeProxy> removed =
        Monitor::addObserverForPath(file, otherQueue, others.handler());
    Monitor::removeAllObserversUsingQueue(nullptr);
    Monitor::removeAllObserversUsingQueue(otherQueue);
    EXPECT_TRUE(support::waitUntil([&] { return removed.expired(); }));
    append(file);
    settle();
    EXPECT_EQ(left.kinds(), Kinds{changed});
    EXPECT_EQ(others.kinds(), Kinds{});
}

TEST_F(MonitorTest, AHandlerMayThrowAndRemoveItsOwnObserverTwice) {
    const support::SystemLogRecorder log;
    const std::string file = makeFile("file");
    Calls calls;
    Monitor::Observer observer;
    queue->sync([&] { // no call before the observer is known
        observer = Monitor::addObserverForPath(file, queue, [&](auto&, auto kind) {
            calls.record(kind);
            if (calls.kinds().size() == 1)
                throw std::runtime_error("from a handler");
            Monitor::removeObserver(observer);
            Monitor::removeObserver(std::exchange(observer, nullptr));
        });
    });
    const std::weak_ptr<QNItemContentChangeProxy> watcher = observer;
    append(file);
    settle();
    EXPECT_EQ(log.count("from a handler"), 1U);
    append(file);
    EXPECT_TRUE(support::waitUntil([&] { return watcher.expired(); }));
    append(file);
    settle();
    EXPECT_EQ(calls.kinds(), (Kinds{changed, changed}));
}

TEST_F(MonitorTest, AnObserverWithoutAQueueIsCalledOnTheMainQueue) {
    const std::string file = makeFile("file");
    const Watch watch(WatchedItem::path(file), nullptr);
    append(file);
    settle();
    EXPECT_EQ(watch.kinds(), Kinds{});
    platform::drainMainQueue();
    EXPECT_EQ(watch.kinds(), Kinds{changed});
    Monitor::removeObserver(nullptr);
}

TEST_F(MonitorTest, CoalescingMakesOneCallOfABurstAtTheDeadlineOfItsFirstWrite) {
    support::ManualClock clock;
    const std::string file = makeFile("file");
    const Watch watch(WatchedItem::path(file), queue);
    watch->setContentChangeCoalesceInterval(1);
    for (int burst = 1; burst <= 2; ++burst) {
        for (int i = 0; i < 10; ++i) {
            append(file);
            settle();
            clock.advance(99ms);
        }
        settle();
        EXPECT_EQ(watch.kinds().size(), burst - 1U);
        clock.advance(10ms);
        EXPECT_TRUE(support::waitUntil([&] { return watch.count(changed) == std::size_t(burst); }));
        clock.advance(10s);
        settle();
        EXPECT_EQ(watch.kinds().size(), std::size_t(burst));
    }
}

TEST_F(MonitorTest, DeletionIsReportedAtOnceWhileACoalescedCallIsPending) {
    support::ManualClock clock;
    const std::string file = makeFile("file");
    const Watch watch(WatchedItem::path(file), queue);
    watch->setContentChangeCoalesceInterval(1);
    append(file);
    settle();
    fs::remove(file);
    settle();
    EXPECT_EQ(watch.kinds(), Kinds{gone});
    clock.advance(1s);
    EXPECT_TRUE(support::waitUntil([&] { return watch.kinds() == Kinds{gone, changed}; }));
}

TEST_F(MonitorTest, AnIntervalThatIsChangedCountsFromTheNextWriteAndNeverPutsACallOff) {
    support::ManualClock clock;
    const std::string file = makeFile("file");
    const Watch watch(WatchedItem::path(file), queue);
    const auto writeWithin = [&](double interval) {
        watch->setContentChangeCoalesceInterval(interval);
        append(file);
        settle();
    };
    const auto callsAfter = [&](std::chrono::milliseconds step) {
        clock.advance(step);
        settle();
        return watch.kinds().size();
    };
    writeWithin(10);
    writeWithin(1); // brings the call forward
    writeWithin(10);
    EXPECT_EQ(callsAfter(999ms), 0U);
    EXPECT_EQ(callsAfter(1ms), 1U);
    EXPECT_EQ(callsAfter(20s), 1U);
    writeWithin(10);
    writeWithin(0); // told at once, in place of the call that was due
    EXPECT_EQ(callsAfter(0ms), 2U);
    EXPECT_EQ(callsAfter(20s), 2U);
}
