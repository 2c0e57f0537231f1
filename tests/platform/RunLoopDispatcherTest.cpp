#include "platform/loop/RunLoopDispatcher.h"

#include "platform/loop/RunLoop.h"
#include "platform/loop/Timer.h"
#include "support/ManualClock.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QSocketNotifier>
#include <QTimer>

#include <array>
#include <optional>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

/// Counts calls, which come by name: a closure would pass between threads through Qt alone, which
/// hides from ThreadSanitizer how it does that.
class Calls : public QObject {
    Q_OBJECT

  public:
    int number() const { return number_; }

  public Q_SLOTS:
    void count() { Q_EMIT counted(++number_); }

  Q_SIGNALS:
    void counted(int number);

  private:
    int number_ = 0;
};

class RunLoopDispatcherTest : public testing::Test {
  protected:
    RunLoopDispatcherTest() {
        QCoreApplication::setEventDispatcher(new platform::RunLoopDispatcher(loop_));
        application_.emplace(count_, arguments_.data());
    }

    platform::RunLoop loop_;

  private:
    std::string name_ = "run_loop_dispatcher_test";
    std::array<char*, 2> arguments_{name_.data(), nullptr};
    int count_ = 1;
    std::optional<QCoreApplication> application_;
};

} // namespace

TEST_F(RunLoopDispatcherTest, CallsFromOtherThreadsAndOfTheRunLoopAreServedWhileItWaits) {
    Calls calls;
    platform::Timer answer(loop_, [&] {
        calls.count();
        QCoreApplication::quit();
    });
    QObject::connect(&calls, &Calls::counted, [&](int number) {
        if (number == 1000)
            answer.start(1ms);
    });
    std::thread other([&] {
        for (int i = 0; i < 1000; ++i)
            QMetaObject::invokeMethod(&calls, "count");
    });
    EXPECT_EQ(QCoreApplication::exec(), 0);
    other.join();
    EXPECT_EQ(calls.number(), 1001);
}

TEST_F(RunLoopDispatcherTest, TimersGoOnUntilTheyAreStoppedAlsoByThemselves) {
    support::ManualClock clock;
    QTimer steady;
    int ticks = 0;
    QObject::connect(&steady, &QTimer::timeout, [&ticks] { ++ticks; });
    auto* const single = new QTimer;
    single->setSingleShot(true);
    int shots = 0;
    QObject::connect(single, &QTimer::timeout, [&shots, single] {
        ++shots;
        delete single;
    });
    steady.start(10);
    single->start(25);
    EXPECT_EQ(single->remainingTime(), 25);
    EXPECT_EQ(QAbstractEventDispatcher::instance()->registeredTimers(&steady).size(), 1);
    for (int i = 0; i < 45; ++i) {
        clock.advance(1ms);
        QCoreApplication::processEvents();
    }
    EXPECT_EQ(ticks, 4);
    EXPECT_EQ(shots, 1);
    steady.stop();
    EXPECT_TRUE(QAbstractEventDispatcher::instance()->registeredTimers(&steady).isEmpty());
    clock.advance(1s);
    QCoreApplication::processEvents();
    EXPECT_EQ(ticks, 4);
}

TEST_F(RunLoopDispatcherTest, SocketsAreWatchedForReadingAndWritingInLoopsWithinLoops) {
    std::array<int, 2> pair{};
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, pair.data()), 0);
    QSocketNotifier reader(pair[0], QSocketNotifier::Read);
    QSocketNotifier writer(pair[0], QSocketNotifier::Write);
    int writable = 0;
    char got = 0;
    QEventLoop inner;
    QObject::connect(&reader, &QSocketNotifier::activated, [&] {
        EXPECT_EQ(::read(pair[0], &got, 1), 1);
        inner.quit();
    });
    QObject::connect(&writer, &QSocketNotifier::activated, [&] {
        ++writable;
        writer.setEnabled(false);
        EXPECT_EQ(::write(pair[1], "x", 1), 1);
        inner.exec();
        QCoreApplication::quit();
    });
    QCoreApplication::exec();
    EXPECT_EQ(writable, 1);
    EXPECT_EQ(got, 'x');
    reader.setEnabled(false);
    ::close(pair[0]);
    ::close(pair[1]);
}

#include "RunLoopDispatcherTest.moc"
