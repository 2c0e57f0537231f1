#include "platform/qtloop/WaitServingEvents.h"

#include <gtest/gtest.h>

#include <QTimer>

#include <future>
#include <stdexcept>
#include <thread>

TEST(WaitServingEvents, ServesEventsUntilTheWorkOnAnotherThreadIsOver) {
    std::promise<void> served;
    QTimer::singleShot(0, [&] { served.set_value(); });
    std::thread::id worker;
    platform::waitServingEvents([&] {
        worker = std::this_thread::get_id();
        served.get_future().wait(); // never comes unless events are served
    });
    EXPECT_NE(worker, std::this_thread::get_id());
}

TEST(WaitServingEvents, PassesOnWhatTheWorkThrows) {
    EXPECT_THROW(platform::waitServingEvents([] { throw std::runtime_error("no"); }),
                 std::runtime_error);
}
