#include "platform/qtloop/WaitServingEvents.h"

#include <QEventLoop>

#include <exception>
#include <thread>

namespace platform {

void waitServingEvents(const std::function<void()>& work) {
    QEventLoop loop;
    std::exception_ptr failure;
    std::thread worker([&] {
        try {
            work();
        } catch (...) {
            failure = std::current_exception();
        }
        QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
    });
    loop.exec();
    worker.join();
    if (failure)
        std::rethrow_exception(failure);
}

} // namespace platform
