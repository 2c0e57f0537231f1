#include "platform/desktop/DiskImageEjection.h"

#include "support/BusConnection.h"
#include "support/PrivateBus.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QDBusArgument>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QStringList>

#include <optional>
#include <unistd.h>

namespace {

/// A scripted disk service.
class DiskService : public QDBusVirtualObject {
  public:
    QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.member() == "Get")
            return connection.send(
                message.createReply(QVariant::fromValue(QDBusVariant(QVariant::fromValue(owner)))));
        const auto options = qdbus_cast<QVariantMap>(message.arguments().value(0));
        calls += message.path().section('/', -1) + ' ' + message.interface().section('.', -1) +
                 ' ' + message.member() +
                 (options.value("auth.no_user_interaction").toBool() ? "" : " asks");
        return connection.send(message.member() == refused
                                   ? message.createErrorReply("org.example.Busy", "busy")
                                   : message.createReply());
    }

    uint owner = ::getuid();
    QString refused;
    QStringList calls;
};

} // namespace

TEST(DiskImageEjection, UnmountsAndGivesBackOnlyWhatThisUserHasMounted) {
    const support::PrivateBus bus;
    support::BusConnection asking(bus.address());
    support::BusConnection answering(bus.address());
    DiskService service;
    const platform::DiskImage image{"/media/x", "/tmp/x.iso", "loop1", "loop1p1"};
    const auto eject = [&] {
        service.calls.clear();
        std::optional<bool> result;
        platform::ejectDiskImage(*asking, image, [&](bool is) { result = is; });
        EXPECT_TRUE(support::waitUntil([&] { return result.has_value(); }));
        return result.value_or(false);
    };
    EXPECT_FALSE(eject()) << "there is no service";
    ASSERT_TRUE(answering->registerVirtualObject("/", &service, QDBusConnection::SubPath));
    ASSERT_TRUE(answering->registerService("org.freedesktop.UDisks2"));
    const QStringList all{"loop1p1 Filesystem Unmount", "loop1 Loop Delete"};
    EXPECT_TRUE(eject());
    EXPECT_EQ(service.calls, all);
    service.refused = "Delete";
    EXPECT_TRUE(eject()) << "the device went by itself";
    service.refused = "Unmount";
    EXPECT_FALSE(eject());
    EXPECT_EQ(service.calls, all.mid(0, 1));
    ++service.owner;
    EXPECT_FALSE(eject());
    EXPECT_TRUE(service.calls.isEmpty());
}
