#include "platform/bus/UnitWatch.h"

#include "support/PrivateBus.h"
#include "support/SystemdManager.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <optional>

using support::SystemdManager;
using support::waitUntil;

TEST(UnitWatch, TellsOfScopesAndServicesOfTheManagerThatIsThere) {
    const support::PrivateBus bus;
    const QString address = QString::fromStdString(bus.address());
    QDBusConnection stranger = QDBusConnection::connectToBus(address, "stranger");
    int changes = 0;
    {
        std::optional<SystemdManager> manager(address);
        const platform::UnitWatch watch([&] { ++changes; },
                                        QDBusConnection::connectToBus(address, "watching"));
        ASSERT_TRUE(waitUntil([&] { return watch.isListening(); }));
        EXPECT_EQ(manager->subscribers(), 1);
        changes = 0;
        for (const char* const unit : {"app-player-1.scope", "dbus-player.service"}) {
            SystemdManager::send(stranger, "UnitNew", unit);
            manager->say("UnitNew", unit);
            manager->say("UnitRemoved", unit);
        }
        for (const char* const unit : {"home.mount", "later.timer", "dev-sda.device"})
            manager->say("UnitNew", unit);
        manager->say("UnitNew", "last.scope");
        EXPECT_TRUE(waitUntil([&] { return changes >= 5; }));
        EXPECT_EQ(changes, 5);

        manager.reset();
        EXPECT_TRUE(waitUntil([&] { return !watch.isListening(); }));
        manager.emplace(address);
        EXPECT_TRUE(waitUntil([&] { return watch.isListening(); })) << "subscribed anew";
    }
    for (const char* const name : {"stranger", "watching"})
        QDBusConnection::disconnectFromBus(name);
}

TEST(UnitWatch, IsSilentWithoutAManagerAndWithoutABus) {
    const platform::UnitWatch none([] {}, QDBusConnection(QStringLiteral("no such bus")));
    EXPECT_FALSE(none.isListening());
    const support::PrivateBus bus;
    {
        const QDBusConnection connection =
            QDBusConnection::connectToBus(QString::fromStdString(bus.address()), "alone");
        const platform::UnitWatch watch([] { ADD_FAILURE(); }, connection);
        connection.call(QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId")));
        support::serveEvents();
        EXPECT_FALSE(watch.isListening());
    }
    QDBusConnection::disconnectFromBus("alone");
}
