#include "ApplicationFixture.h"

#include "platform/loop/DispatchQueue.h"
#include "platform/loop/SignalEvents.h"

#include <atomic>
#include <csignal>
#include <thread>

namespace {

/// Notes its name when a signal comes.
class Observer : public QObject {
    Q_OBJECT

  public:
    Observer(std::string name, std::string& order) : name_(std::move(name)), order_(order) {}

    Q_INVOKABLE void note(int signal) {
        order_ += name_;
        signal_ = signal;
    }
    Q_INVOKABLE void noteAgain(int) { order_ += name_ + "'"; }
    Q_INVOKABLE void fail(int) {
        order_ += name_;
        throw std::runtime_error("an observer");
    }

    int signal_ = 0;

  private:
    const std::string name_;
    std::string& order_;
};

class SignalsTest : public ApplicationTest {
  protected:
    /// Sends the signal and serves events until `done`.
    static bool raiseAndWait(int signal, const std::function<bool()>& done) {
        ::raise(signal);
        return support::waitUntil(done);
    }

    /// Returns when everything that has come has been delivered.
    void settle() {
        for (int i = 0; i < 3; ++i)
            support::serveEvents();
    }

    std::string order;
};

} // namespace

TEST_F(SignalsTest, ReachAllObserversTheNewestFirstWhateverTheyThrow) {
    Observer a("a", order);
    Observer b("b", order);
    Observer c("c", order);
    application.addObserver(&a, "note", SIGUSR1);
    application.addObserver(&a, "note", SIGUSR1); // is there already
    application.addObserver(&a, "noteAgain", SIGUSR1);
    application.addObserver(&b, "fail", SIGUSR1);
    application.addObserver(&c, "note", SIGUSR1);
    application.addObserver(&c, "note", 0);
    application.addObserver(&c, "missing", SIGUSR2);
    EXPECT_TRUE(raiseAndWait(SIGUSR1, [&] { return order == "cba'a"; })) << order;
    EXPECT_EQ(c.signal_, SIGUSR1);
    EXPECT_TRUE(systemLog.contains("signalDidFire::"));
    EXPECT_TRUE(systemLog.contains("Exception: an observer Backtrace: "));
    EXPECT_TRUE(raiseAndWait(SIGUSR2, [&] { return systemLog.contains("no method missing"); }));

    order.clear();
    application.removeObserver(&a, "noteAgain", SIGUSR1);
    application.removeObserver(&c, nullptr, SIGUSR1);
    {
        Observer gone("gone", order);
        application.addObserver(&gone, "note", SIGUSR1);
    }
    EXPECT_TRUE(raiseAndWait(SIGUSR1, [&] { return order == "ba"; })) << order;
    application.removeObserver(&a, nullptr, -1);
    application.removeObserver(&b, nullptr, -1);
    ::raise(SIGUSR1);
    settle();
    EXPECT_EQ(order, "ba");
}

TEST_F(SignalsTest, WaitWhileDeliveryIsDisabledFromWhateverThread) {
    Observer a("a", order);
    application.addObserver(&a, "note", SIGUSR1);
    EXPECT_TRUE(application.disableSignals());
    std::thread([&] { EXPECT_FALSE(application.disableSignals()); }).join();
    EXPECT_FALSE(application.deliverSignals());
    ::raise(SIGUSR1);
    settle();
    EXPECT_FALSE(application.enableSignals());
    settle();
    EXPECT_EQ(order, "");
    std::thread([&] { EXPECT_TRUE(application.setDeliverSignals(true)); }).join();
    EXPECT_TRUE(support::waitUntil([&] { return order == "a"; })) << "nothing is lost";
    EXPECT_TRUE(application.enableSignals()); // one too many
    EXPECT_TRUE(application.deliverSignals());
    EXPECT_TRUE(application.disableSignals());
    EXPECT_FALSE(application.deliverSignals());
}

TEST_F(SignalsTest, AProxyCallsItsHandlerOnItsQueue) {
    const auto queue = platform::DispatchQueue::makeSerial("com.quarnel.test");
    std::atomic<int> onQueue = 0;
    std::atomic<int> onMain = 0;
    const auto proxy = application.addObserverForSignal(SIGUSR1, queue, [&](int signal) {
        EXPECT_TRUE(queue->isCurrent());
        onQueue = signal;
    });
    application.addObserverForSignal(SIGUSR1, nullptr, [&](int signal) { onMain = signal; });
    EXPECT_TRUE(raiseAndWait(SIGUSR1, [&] { return onQueue == SIGUSR1 && onMain == SIGUSR1; }));
    application.removeObserverForSignal(SIGUSR1, proxy);
    onQueue = onMain = 0;
    EXPECT_TRUE(raiseAndWait(SIGUSR1, [&] { return onMain == SIGUSR1; }));
    EXPECT_EQ(onQueue, 0);
}

TEST_F(SignalsTest, ProgramsThatWeStartGetDefaultActionsAndAnEmptyMask) {
    Observer a("a", order);
    application.addObserver(&a, "note", SIGTERM);
    platform::ignoreWriteSignals();
    FILE* const child = ::popen("grep -E '^Sig(Blk|Ign|Cgt)' /proc/self/status", "r");
    ASSERT_NE(child, nullptr);
    char line[64];
    int lines = 0;
    for (; std::fgets(line, sizeof line, child); ++lines)
        EXPECT_EQ(std::stoull(std::string(line).substr(7), nullptr, 16) &
                      (1ULL << (SIGTERM - 1) | 1ULL << (SIGPIPE - 1) | 1ULL << (SIGXFSZ - 1)),
                  0U)
            << line;
    ::pclose(child);
    EXPECT_EQ(lines, 3);
}

#include "SignalsTest.moc"
