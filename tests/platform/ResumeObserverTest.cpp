#include "platform/bus/ResumeObserver.h"

#include "support/PrivateBus.h"
#include "support/SystemLogRecorder.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QDBusMessage>

#include <optional>
#include <stdexcept>

namespace {

QDBusConnection connectTo(const support::PrivateBus& bus, const char* name) {
    return QDBusConnection::connectToBus(QString::fromStdString(bus.address()),
                                         QString::fromLatin1(name));
}

void say(QDBusConnection& bus, bool fallsAsleep) {
    auto signal = QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/login1"),
                                             QStringLiteral("org.freedesktop.login1.Manager"),
                                             QStringLiteral("PrepareForSleep"));
    signal << fallsAsleep;
    bus.send(signal);
}

} // namespace

TEST(ResumeObserver, HearsOfEachWakingFromLogindOnly) {
    const support::PrivateBus bus;
    const support::SystemLogRecorder log;
    QDBusConnection logind = connectTo(bus, "logind");
    QDBusConnection stranger = connectTo(bus, "pretender");
    const QDBusConnection observing = connectTo(bus, "observing");
    int resumed = 0;
    {
        const platform::ResumeObserver observer(
            [&] {
                ++resumed;
                throw std::runtime_error("from a handler");
            },
            observing);
        say(stranger, false);
        ASSERT_TRUE(logind.registerService(QStringLiteral("org.freedesktop.login1")));
        for (const bool fallsAsleep : {true, false, true, false})
            say(logind, fallsAsleep);
        EXPECT_TRUE(support::waitUntil([&] { return resumed == 2; }));
    }
    say(logind, false);
    // What has been said before the answer to this would have arrived before it.
    observing.call(QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId")));
    support::serveEvents();
    EXPECT_EQ(resumed, 2);
    EXPECT_EQ(log.count("from a handler"), 2U);
    for (const char* const name : {"logind", "pretender", "observing"})
        QDBusConnection::disconnectFromBus(QString::fromLatin1(name));
}

TEST(ResumeObserver, SaysOnceThatTheBusHasGone) {
    std::optional<support::PrivateBus> bus(std::in_place);
    const support::SystemLogRecorder log;
    {
        const platform::ResumeObserver observer([] {}, connectTo(*bus, "leaving"));
        bus.reset();
        EXPECT_TRUE(support::waitUntil([&] { return !log.lines().empty(); }));
    }
    EXPECT_EQ(log.count("The system bus has gone"), 1U);
    QDBusConnection::disconnectFromBus(QStringLiteral("leaving"));
}

TEST(ResumeObserver, IsSilentWithoutABus) {
    const support::SystemLogRecorder log;
    const platform::ResumeObserver observer([] {}, QDBusConnection(QStringLiteral("no such bus")));
    EXPECT_TRUE(log.lines().empty());
}
