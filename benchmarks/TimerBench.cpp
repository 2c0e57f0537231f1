#include "Harness.h"

#include "platform/loop/RunLoop.h"
#include "platform/loop/Timer.h"

#include <QBasicTimer>
#include <QObject>

#include <vector>

using namespace std::chrono_literals;

namespace {

constexpr std::size_t restarts = 20000;
constexpr std::size_t otherTimers = 100;

// A pending activity reset that each message pushes back, while a hundred other programs play.
double restartOurs() {
    platform::RunLoop loop;
    std::vector<std::unique_ptr<platform::Timer>> timers;
    for (std::size_t i = 0; i <= otherTimers; ++i) {
        timers.push_back(std::make_unique<platform::Timer>(loop, [] {}));
        timers.back()->start(100ms);
    }
    return bench::nanosecondsEach(restarts, [&] {
        for (std::size_t i = 0; i < restarts; ++i)
            timers.front()->start(100ms);
    });
}

double restartQt() {
    QObject receiver;
    std::vector<QBasicTimer> timers(otherTimers + 1);
    for (QBasicTimer& timer : timers)
        timer.start(100, Qt::PreciseTimer, &receiver);
    return bench::nanosecondsEach(restarts, [&] {
        for (std::size_t i = 0; i < restarts; ++i)
            timers.front().start(100, Qt::PreciseTimer, &receiver);
    });
}

[[maybe_unused]] const bool added =
    bench::addFigure({"timer/restart", "pushing back one pending timer of 101", "ns", &restartOurs,
                      "QBasicTimer", &restartQt});

} // namespace
