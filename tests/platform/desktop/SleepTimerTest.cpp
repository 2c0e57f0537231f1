#include "platform/desktop/SleepTimer.h"

#include "support/BusConnection.h"
#include "support/PrivateBus.h"

#include <gtest/gtest.h>

#include <QDBusContext>
#include <QDBusVirtualObject>
#include <QVariantMap>

#include <chrono>
#include <future>
#include <limits>

namespace {

/// Answers for logind's manager, or keeps silent.
class LoginManager : public QDBusVirtualObject {
  public:
    QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        ++questions;
        if (silent)
            return true;
        if (message.arguments().value(0).toString() == u"org.freedesktop.login1.Manager")
            return connection.send(message.createReply(properties));
        return false;
    }

    QVariantMap properties;
    bool silent = false;
    int questions = 0;
};

class SleepTimer : public testing::Test {
  protected:
    /// Asks on another thread, so that this one can answer.
    unsigned ask() {
        auto answer =
            std::async(std::launch::async, [&] { return platform::machineSleepTimer(*asking_); });
        EXPECT_TRUE(support::waitUntil([&] {
            return answer.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
        })) << "a bus that keeps silent held it up";
        return answer.get();
    }

    unsigned askWith(const QString& action, quint64 microseconds) {
        manager_.properties = {{"IdleAction", action}, {"IdleActionUSec", microseconds}};
        return ask();
    }

    void takeTheName() {
        ASSERT_TRUE(answering_->registerVirtualObject("/org/freedesktop/login1", &manager_));
        ASSERT_TRUE(answering_->registerService("org.freedesktop.login1"));
    }

    const support::PrivateBus bus_;
    LoginManager manager_;
    support::BusConnection asking_{bus_.address()};
    support::BusConnection answering_{bus_.address()};
};

} // namespace

TEST_F(SleepTimer, TellsTheMinutesAfterWhichTheMachineSleeps) {
    ASSERT_NO_FATAL_FAILURE(takeTheName());
    constexpr quint64 second = 1'000'000;
    constexpr quint64 minute = 60 * second;
    for (const char* const action :
         {"suspend", "hibernate", "hybrid-sleep", "suspend-then-hibernate", "sleep"})
        EXPECT_EQ(askWith(QString::fromLatin1(action), 30 * minute), 30U) << action;
    for (const char* const action : {"ignore", "lock", "poweroff", ""})
        EXPECT_EQ(askWith(QString::fromLatin1(action), 30 * minute), 0U) << action;

    const QString suspend = "suspend";
    EXPECT_EQ(askWith(suspend, second), 1U) << "less than a minute is not never";
    EXPECT_EQ(askWith(suspend, minute + 1), 2U);
    EXPECT_EQ(askWith(suspend, 0), 0U);
    EXPECT_EQ(askWith(suspend, std::numeric_limits<quint64>::max()), 0U) << "infinity";
    EXPECT_EQ(askWith(suspend, std::numeric_limits<quint64>::max() - 1),
              std::numeric_limits<unsigned>::max());
    manager_.properties.remove("IdleActionUSec");
    EXPECT_EQ(ask(), 0U);
}

TEST_F(SleepTimer, IsZeroWithoutABusOrALogindThatAnswers) {
    EXPECT_EQ(platform::machineSleepTimer(QDBusConnection("no such bus")), 0U);
    EXPECT_EQ(ask(), 0U) << "nobody has the name";
    ASSERT_NO_FATAL_FAILURE(takeTheName());
    manager_.silent = true;
    EXPECT_EQ(ask(), 0U);
    EXPECT_EQ(manager_.questions, 1);
}
