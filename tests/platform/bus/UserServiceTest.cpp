#include "platform/bus/UserService.h"

#include "support/PrivateBus.h"
#include "support/SystemdManager.h"

#include <gtest/gtest.h>

#include <optional>

using platform::UserService;
using support::BusConnection;
using support::SystemdManager;
using support::waitUntil;

namespace {

UserService::State ask(UserService& service) {
    std::optional<UserService::State> state;
    service.ask([&](const UserService::State& answer) { state = answer; });
    EXPECT_FALSE(state) << "later";
    EXPECT_TRUE(waitUntil([&] { return state.has_value(); }));
    return state.value_or(UserService::State());
}

/// What one of its operations answers.
template <typename Operation>
QString errorOf(Operation operation) {
    std::optional<QString> error;
    operation([&](const QString& answer) { error = answer; });
    EXPECT_TRUE(waitUntil([&] { return error.has_value(); }));
    return error.value_or("no answer");
}

QString start(UserService& service) {
    return errorOf([&](auto answer) { service.start(answer); });
}

} // namespace

TEST(UserService, TellsWhatSystemdSaysOfItAndStartsIt) {
    const support::PrivateBus bus;
    const BusConnection ours(bus.address());
    SystemdManager manager(QString::fromStdString(bus.address()));
    UserService service("player.service", *ours);
    EXPECT_FALSE(ask(service).isInstalled);

    manager.unit.load = "loaded";
    manager.unit.activity = "activating";
    EXPECT_FALSE(ask(service).isOutdated);
    manager.unit.isOutdated = true;
    EXPECT_TRUE(ask(service).isOutdated);
    EXPECT_TRUE(ask(service).isInstalled);
    EXPECT_TRUE(ask(service).isStarting());
    EXPECT_EQ(start(service), QString());
    EXPECT_EQ(manager.calls(), (QStringList{"reset player.service", "start player.service"}));

    manager.unit.load = "masked";
    manager.unit.activity = "failed";
    EXPECT_TRUE(ask(service).isInstalled);
    EXPECT_FALSE(ask(service).isStarting());
    EXPECT_EQ(ask(service).load, "masked");
    EXPECT_EQ(start(service), "Unit player.service is masked.");
}

TEST(UserService, IsLinkedAndRemovedForLaterSessionsToo) {
    const support::PrivateBus bus;
    const BusConnection ours(bus.address());
    SystemdManager manager(QString::fromStdString(bus.address()));
    UserService service("player.service", *ours);
    EXPECT_EQ(errorOf([&](auto answer) { service.enable("/library/player.service", answer); }), "");
    EXPECT_EQ(errorOf([&](auto answer) { service.remove(answer); }), "");
    EXPECT_EQ(manager.calls(),
              (QStringList{"enable /library/player.service", "reload", "stop player.service",
                           "disable player.service", "reload"}));
}

TEST(UserService, IsNotThereWithoutAManagerOrABus) {
    const support::PrivateBus bus;
    const BusConnection alone(bus.address());
    for (const QDBusConnection& connection : {*alone, QDBusConnection("no such bus")}) {
        UserService service("player.service", connection);
        EXPECT_FALSE(ask(service).isInstalled);
        EXPECT_FALSE(ask(service).hasManager());
        EXPECT_NE(start(service), QString());
        EXPECT_NE(errorOf([&](auto answer) { service.enable("/player.service", answer); }), "");
        bool isAnswered = false;
        UserService gone("player.service", connection);
        {
            UserService passing("player.service", connection);
            passing.ask([&](const UserService::State&) { isAnswered = true; });
        }
        ask(gone); // the questions are answered in their order
        EXPECT_FALSE(isAnswered) << "nobody is left to be told";
    }
}
