#include "platform/qtloop/WaitServingEvents.h"

#include <QEventLoop>

#include <atomic>
#include <exception>
#include <thread>

namespace platform {

void waitServingEvents(const std::function<void()>& work, const std::function<void()>& hurry) {
    QEventLoop loop;
    std::atomic<bool> isOver = false;
    std::exception_ptr failure;
    std::thread worker([&] {
        try {
            work();
        } catch (...) {
            failure = std::current_exception();
        }
        isOver = true;
        QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
    });
    loop.exec();
    if (hurry && !isOver)
        hurry();
    worker.join();
    if (failure)
        std::rethrow_exception(failure);
}

} // namespace platform
