#include "workspace/UnitWatch.h"

#include "support/PrivateBus.h"
#include "support/SystemdManager.h"

#include <gtest/gtest.h>

#include <optional>

using support::BusConnection;
using support::SystemdManager;
using support::waitUntil;

TEST(UnitWatch, TellsOfScopesAndServicesOfTheManagerThatIsThere) {
    const support::PrivateBus bus;
    const QString address = QString::fromStdString(bus.address());
    BusConnection stranger(bus.address());
    const BusConnection watching(bus.address());
    int changes = 0;
    std::optional<SystemdManager> manager(address);
    const UnitWatch watch([&] { ++changes; }, *watching);
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

TEST(UnitWatch, IsSilentWithoutAManagerAndWithoutABus) {
    const UnitWatch none([] {}, QDBusConnection("no such bus"));
    EXPECT_FALSE(none.isListening());
    const support::PrivateBus bus;
    BusConnection alone(bus.address());
    const UnitWatch watch([] { ADD_FAILURE(); }, *alone);
    alone.settle();
    EXPECT_FALSE(watch.isListening());
}
