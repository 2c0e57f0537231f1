#include "platform/loop/RunLoopDispatcher.h"

#include "platform/files/FileDescriptor.h"
#include "platform/loop/RunLoop.h"
#include "platform/loop/RunLoopSource.h"
#include "platform/loop/Timer.h"
#include "platform/processes/SystemLog.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <QTimerEvent>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <utility>

namespace platform {

/// Has a descriptor of its own, since two notifiers may watch the same one.
struct RunLoopDispatcher::Notifier {
    FileDescriptor descriptor;
    std::unique_ptr<RunLoopSource> source;
};

struct RunLoopDispatcher::TimerEntry {
    TimerEntry(TimerInfo its, QObject* owner, RunLoop& loop, std::function<void()> fired)
        : info(its), object(owner), timer(loop, std::move(fired)) {}

    void start() {
        due = MonotonicClock::now() + std::chrono::milliseconds(info.interval);
        timer.startAt(due);
    }

    TimerInfo info;
    QObject* object;
    MonotonicClock::time_point due;
    Timer timer;
};

RunLoopDispatcher::RunLoopDispatcher(RunLoop& loop) : loop_(loop) {}

RunLoopDispatcher::~RunLoopDispatcher() = default;

bool RunLoopDispatcher::processEvents(QEventLoop::ProcessEventsFlags flags) {
    interrupted_ = false;
    Q_EMIT awake();
    QCoreApplication::sendPostedEvents();
    if (interrupted_)
        return true;
    if (!flags.testFlag(QEventLoop::WaitForMoreEvents)) {
        loop_.turn();
        return true;
    }
    Q_EMIT aboutToBlock();
    loop_.turnWhenReady();
    Q_EMIT awake();
    return true;
}

void RunLoopDispatcher::registerSocketNotifier(QSocketNotifier* notifier) {
    auto entry = std::make_unique<Notifier>();
    entry->descriptor =
        FileDescriptor(::fcntl(static_cast<int>(notifier->socket()), F_DUPFD_CLOEXEC, 0));
    const auto interest = notifier->type() == QSocketNotifier::Read    ? RunLoopSource::reading
                          : notifier->type() == QSocketNotifier::Write ? RunLoopSource::writing
                                                                       : RunLoopSource::nothing;
    entry->source = RunLoopSource::create(loop_, entry->descriptor.get(), interest, [notifier] {
        QEvent event(QEvent::SockAct);
        QCoreApplication::sendEvent(notifier, &event);
    });
    if (entry->source == nullptr)
        systemLog(LogPriority::error, "Couldn't watch a descriptor: %s (%d)", std::strerror(errno),
                  errno);
    notifiers_[notifier] = std::move(entry);
}

void RunLoopDispatcher::unregisterSocketNotifier(QSocketNotifier* notifier) {
    notifiers_.erase(notifier);
}

void RunLoopDispatcher::registerTimer(int timer, qint64 interval, Qt::TimerType type,
                                      QObject* object) {
    auto& entry = timers_[timer];
    entry = std::make_unique<TimerEntry>(TimerInfo(timer, static_cast<int>(interval), type), object,
                                         loop_, [this, timer] { fire(timer); });
    entry->start();
}

bool RunLoopDispatcher::unregisterTimer(int timer) {
    return timers_.erase(timer) > 0;
}

bool RunLoopDispatcher::unregisterTimers(QObject* object) {
    return std::erase_if(timers_,
                         [object](const auto& each) { return each.second->object == object; }) > 0;
}

QList<QAbstractEventDispatcher::TimerInfo>
RunLoopDispatcher::registeredTimers(QObject* object) const {
    QList<TimerInfo> timers;
    for (const auto& [id, entry] : timers_) {
        if (entry->object == object)
            timers.append(entry->info);
    }
    return timers;
}

int RunLoopDispatcher::remainingTime(int timer) {
    const auto found = timers_.find(timer);
    if (found == timers_.end())
        return -1;
    const auto rest =
        std::chrono::ceil<std::chrono::milliseconds>(found->second->due - MonotonicClock::now());
    return static_cast<int>(std::max<std::int64_t>(rest.count(), 0));
}

void RunLoopDispatcher::fire(int timer) {
    TimerEntry& entry = *timers_.at(timer);
    entry.start();
    QTimerEvent event(timer);
    QCoreApplication::sendEvent(entry.object, &event); // which may unregister the timer
}

void RunLoopDispatcher::wakeUp() {
    if (!woken_->exchange(true))
        loop_.post([woken = woken_] { *woken = false; });
}

void RunLoopDispatcher::interrupt() {
    interrupted_ = true;
    wakeUp();
}

} // namespace platform
