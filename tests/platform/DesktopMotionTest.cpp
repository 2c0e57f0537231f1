#include "platform/desktop/DesktopMotion.h"

#include "support/PrivateBus.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QDBusMessage>
#include <QDBusVariant>

namespace {

QDBusConnection connectTo(const support::PrivateBus& bus, const char* name) {
    return QDBusConnection::connectToBus(QString::fromStdString(bus.address()),
                                         QString::fromLatin1(name));
}

/// The desktop's portal, as far as it is asked.
class Portal : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

  public:
    explicit Portal(QDBusConnection bus) : bus_(bus) {
        bus_.registerObject("/org/freedesktop/portal/desktop", this,
                            QDBusConnection::ExportAllSlots);
        bus_.registerService("org.freedesktop.portal.Desktop");
    }

    void change(const QString& key, const QVariant& value) {
        auto signal = QDBusMessage::createSignal(
            "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings", "SettingChanged");
        signal << "org.gnome.desktop.interface" << key << QVariant::fromValue(QDBusVariant(value));
        bus_.send(signal);
    }

  public Q_SLOTS:
    QDBusVariant Read(const QString& group, const QString& key) {
        const bool isAsked = group == "org.gnome.desktop.interface" && key == "enable-animations";
        return QDBusVariant(QVariant::fromValue(QDBusVariant(!isAsked)));
    }

  private:
    QDBusConnection bus_;
};

} // namespace

TEST(DesktopMotion, IsWhatTheDesktopSaysNowAndLater) {
    const support::PrivateBus bus;
    {
        const platform::DesktopMotion alone(connectTo(bus, "alone"));
        support::serveEvents();
        EXPECT_TRUE(alone.isWanted()) << "nobody knows";
    }
    Portal portal(connectTo(bus, "portal"));
    const platform::DesktopMotion motion(connectTo(bus, "motion"));
    EXPECT_TRUE(support::waitUntil([&] { return !motion.isWanted(); }));
    portal.change("cursor-size", true);
    portal.change("enable-animations", "yes");
    portal.change("enable-animations", true);
    EXPECT_TRUE(support::waitUntil([&] { return motion.isWanted(); }));
    for (const char* const name : {"alone", "portal", "motion"})
        QDBusConnection::disconnectFromBus(QString::fromLatin1(name));
}

#include "DesktopMotionTest.moc"
