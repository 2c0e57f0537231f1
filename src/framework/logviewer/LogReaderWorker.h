#pragma once

#include "framework/logviewer/LogParser.h"
#include "framework/logviewer/LogReader.h"
#include "framework/monitor/QNItemContentChangeMonitor.h"
#include "platform/base/Mutex.h"
#include "platform/loop/DispatchQueue.h"
#include "platform/loop/DispatchTimer.h"

#include <atomic>
#include <optional>

namespace QN::logviewer {

/// What a reader does on its queue. It lives until its last block has run.
class LogReader::Worker : public std::enable_shared_from_this<Worker> {
  public:
    Worker(std::shared_ptr<const LogBytes> file, std::string path, Handler handler);

    /// Both on the main thread, once.
    void start();
    void stop();

  private:
    void begin();
    void watch();
    void pollLater();
    bool readTailFirst();
    void readOnSoon();
    void readOn();
    void readBlock(std::string& buffer);
    bool skipBeginning();
    bool isCut() const;
    void beginAnew();
    LogFileState stateOfFile() const;
    void rememberBeginning();
    void deliver(LogDelivery delivery);
    void deliverWaiting();

    const std::shared_ptr<const LogBytes> file_;
    const std::string path_;
    const std::shared_ptr<platform::DispatchQueue> queue_;
    std::atomic<bool> isStopped_{false};

    Handler handler_; // main thread, like the next one
    QNItemContentChangeMonitor::Observer observer_;

    // On the queue.
    LogParser parser_;
    bool isAtBeginning_ = true;
    bool hasBeenCut_ = false;
    std::string beginning_; // of the file, to tell when it is overwritten
    LogFileState state_ = LogFileState::present;
    std::optional<platform::DispatchTimer> soon_; // after the tail
    std::optional<platform::DispatchTimer> poll_; // where nothing can be watched

    platform::Mutex mutex_;
    std::vector<LogDelivery> waiting_ GUARDED_BY(mutex_);
};

} // namespace QN::logviewer
