#pragma once

#include <QAbstractEventDispatcher>

#include <atomic>
#include <map>
#include <memory>

namespace platform {

class RunLoop;

/// Has a program without windows wait in one RunLoop for Qt's events as well, which costs half of
/// the kernel's work that RunLoopNotifier does for each event. Hand a new one to
/// QCoreApplication::setEventDispatcher() before the application object is made, which owns it from
/// then on; the run loop must outlive that. Loops that Qt runs inside each other work, but without
/// a choice of what they serve: the flags that leave out sockets are not obeyed.
class RunLoopDispatcher : public QAbstractEventDispatcher {
  public:
    explicit RunLoopDispatcher(RunLoop& loop);
    ~RunLoopDispatcher() override;

    bool processEvents(QEventLoop::ProcessEventsFlags flags) override;
    void registerSocketNotifier(QSocketNotifier* notifier) override;
    void unregisterSocketNotifier(QSocketNotifier* notifier) override;
    void registerTimer(int timer, qint64 interval, Qt::TimerType type, QObject* object) override;
    bool unregisterTimer(int timer) override;
    bool unregisterTimers(QObject* object) override;
    QList<TimerInfo> registeredTimers(QObject* object) const override;
    int remainingTime(int timer) override;
    void wakeUp() override;
    void interrupt() override;

  private:
    struct Notifier;
    struct TimerEntry;

    void fire(int timer);

    RunLoop& loop_;
    std::map<QSocketNotifier*, std::unique_ptr<Notifier>> notifiers_;
    std::map<int, std::unique_ptr<TimerEntry>> timers_;
    const std::shared_ptr<std::atomic<bool>> woken_ = std::make_shared<std::atomic<bool>>(false);
    std::atomic<bool> interrupted_ = false;
};

} // namespace platform
