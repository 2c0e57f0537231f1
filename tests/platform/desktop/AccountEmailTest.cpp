#include "platform/desktop/AccountEmail.h"

#include "support/BusConnection.h"
#include "support/PrivateBus.h"

#include <gtest/gtest.h>

#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QDBusVirtualObject>

#include <chrono>
#include <future>
#include <unistd.h>

namespace {

/// Answers for the account service.
class Accounts : public QDBusVirtualObject {
  public:
    QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        const QVariantList arguments = message.arguments();
        if (message.member() == "FindUserById" && arguments == QVariantList{qlonglong(::getuid())})
            return connection.send(message.createReply(
                QVariant::fromValue(QDBusObjectPath(message.path() + "/User1"))));
        if (message.path().endsWith("/User1") &&
            arguments == QVariantList{"org.freedesktop.Accounts.User", "Email"})
            return connection.send(
                message.createReply(QVariant::fromValue(QDBusVariant(" a@b.example "))));
        return false;
    }
};

QString ask(const QDBusConnection& bus) {
    auto answer = std::async(std::launch::async, [&] { return platform::accountEmail(bus); });
    EXPECT_TRUE(support::waitUntil(
        [&] { return answer.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
    return answer.get();
}

} // namespace

TEST(AccountEmail, IsThatOfTheServiceIfThereIsOne) {
    const support::PrivateBus bus;
    const support::BusConnection asking(bus.address());
    const support::BusConnection answering(bus.address());
    EXPECT_EQ(platform::accountEmail(QDBusConnection("no such bus")), "");
    EXPECT_EQ(ask(*asking), "") << "nobody has the name";
    Accounts accounts;
    QDBusConnection service = *answering;
    ASSERT_TRUE(service.registerVirtualObject("/org/freedesktop/Accounts", &accounts,
                                              QDBusConnection::SubPath));
    ASSERT_TRUE(service.registerService("org.freedesktop.Accounts"));
    EXPECT_EQ(ask(*asking), "a@b.example");
}
