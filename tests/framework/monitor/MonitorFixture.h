#pragma once

#include "framework/monitor/QNItemContentChangeMonitor.h"

#include "platform/loop/BackgroundLoop.h"
#include "platform/loop/DispatchQueue.h"
#include "platform/loop/MainQueue.h"
#include "platform/loop/RunLoop.h"
#include "support/PrivateFolder.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <string>
#include <vector>

namespace fs = std::filesystem;

/// Keeps the kinds that a handler is called with. Any thread; must outlive the observer.
class Calls {
  public:
    QNItemContentChangeMonitor::Handler handler() {
        return [this](const WatchedItem&, QNItemContentChangeKind kind) { record(kind); };
    }

    void record(QNItemContentChangeKind kind) {
        const std::lock_guard lock(mutex_);
        kinds_.push_back(kind);
    }

    std::vector<QNItemContentChangeKind> kinds() const {
        const std::lock_guard lock(mutex_);
        return kinds_;
    }

    std::size_t count(QNItemContentChangeKind kind) const {
        const auto all = kinds();
        return static_cast<std::size_t>(std::count(all.begin(), all.end(), kind));
    }

  private:
    mutable std::mutex mutex_;
    std::vector<QNItemContentChangeKind> kinds_; // guarded by mutex_
};

/// An observer of an item, which keeps what it is told and goes with the object.
class Watch : public Calls {
  public:
    Watch(WatchedItem item, const QNItemContentChangeMonitor::Queue& queue)
        : observer_(QNItemContentChangeMonitor::addObserverForObject(std::move(item), queue,
                                                                     handler())) {}
    /// Waits until it can be told nothing any more.
    ~Watch() {
        QNItemContentChangeMonitor::removeObserver(observer_);
        EXPECT_TRUE(support::waitUntil([&] {
            platform::drainMainQueue();
            return observer_.use_count() == 1; // the monitor has forgotten it
        }));
        observer_->queue()->sync([] {});
    }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    QNItemContentChangeProxy* operator->() const { return observer_.get(); }

  private:
    const QNItemContentChangeMonitor::Observer observer_;
};

/// A folder to work in and a queue for handlers.
class MonitorTest : public testing::Test {
  protected:
    std::string path(const std::string& name) const { return folder_.path() / name; }

    std::string makeFile(const std::string& name) const {
        std::ofstream(path(name)) << "begin";
        return path(name);
    }

    /// Empty, whatever was there before.
    std::string makeFolder(const std::string& name) const {
        fs::remove_all(path(name));
        fs::create_directory(path(name));
        return path(name);
    }

    static void append(const std::string& file) { std::ofstream(file, std::ios::app) << "x"; }

    /// Returns when all that has happened to files and to the clock until now has had its effect on
    /// `queue`: events come in order, so a second file's are waited for.
    void settle() {
        for (int i = 0; i < 2; ++i) { // what is due by the clock is served after the events
            const std::size_t before = sentinel_.count(QNItemContentChanged);
            append(sentinelFile_);
            ASSERT_TRUE(
                support::waitUntil([&] { return sentinel_.count(QNItemContentChanged) > before; }));
            queue->sync([] {});
        }
    }

    static std::ptrdiff_t openDescriptors() {
        return std::distance(fs::directory_iterator("/proc/self/fd"), {});
    }

    const std::shared_ptr<platform::DispatchQueue> queue =
        platform::DispatchQueue::makeSerial("com.quarnel.test");

  private:
    const support::PrivateFolder folder_;
    const std::string sentinelFile_ = makeFile("sentinel");
    const Watch sentinel_{WatchedItem::path(sentinelFile_), queue};
};
