#include "platform/desktop/Restart.h"

#include "support/BusConnection.h"
#include "support/PrivateBus.h"

#include <gtest/gtest.h>

#include <QDBusVirtualObject>
#include <QStringList>

#include <cerrno>
#include <cstdlib>
#include <string>

namespace {

/// Takes every call on a bus, and answers or refuses.
class Receiver : public QDBusVirtualObject {
  public:
    QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        calls += message.path() + ' ' + message.interface() + ' ' + message.member() +
                 (message.arguments().value(0).toBool() ? " true" : "");
        interactive = message.isInteractiveAuthorizationAllowed();
        return connection.send(error.isEmpty() ? message.createReply()
                                               : message.createErrorReply(error, "not today"));
    }

    QStringList calls;
    QString error;
    bool interactive = false;
};

/// One private bus stands for both; the names on it tell them apart.
class Restart : public testing::Test {
  protected:
    Restart() {
        answering_->registerVirtualObject("/", &receiver, QDBusConnection::SubPath);
        answering_->registerService("org.freedesktop.login1");
    }

    void request(const QStringList& names) {
        for (const QString& name : names)
            EXPECT_TRUE(answering_->registerService(name)) << name.toStdString();
        receiver.calls.clear();
        refusals.clear();
        EXPECT_EQ(platform::requestRestart(*asking_, *asking_,
                                           [this](const QString& reason) { refusals += reason; }),
                  0);
        EXPECT_TRUE(receiver.calls.isEmpty()) << "it waited for an answer";
    }

    bool arrives(const QString& call) {
        return support::waitUntil([&] { return receiver.calls.value(0) == call; });
    }

    void leave(const QStringList& names) {
        for (const QString& name : names)
            answering_->unregisterService(name);
    }

    Receiver receiver;
    QStringList refusals;
    static constexpr const char* toLogind =
        "/org/freedesktop/login1 org.freedesktop.login1.Manager Reboot true";

  private:
    const support::PrivateBus bus_;
    support::BusConnection answering_{bus_.address()};
    support::BusConnection asking_{bus_.address()};
};

} // namespace

TEST_F(Restart, AsksTheSessionManagerThatRuns) {
    const struct {
        QStringList names;
        const char* call;
    } cases[] = {
        {{"org.gnome.SessionManager"}, "/org/gnome/SessionManager org.gnome.SessionManager Reboot"},
        {{"org.kde.ksmserver", "org.kde.Shutdown"}, "/Shutdown org.kde.Shutdown logoutAndReboot"},
        {{"org.xfce.SessionManager"},
         "/org/xfce/SessionManager org.xfce.Session.Manager Restart true"},
        {{"org.lxqt.session"}, "/LXQtSession org.lxqt.session reboot"},
    };
    for (const auto& [names, call] : cases) {
        request(names);
        EXPECT_TRUE(arrives(call)) << call << ": " << receiver.calls.join('\n').toStdString();
        leave(names);
    }
}

TEST_F(Restart, AsksLogindInteractivelyWithoutASessionManager) {
    request({});
    EXPECT_TRUE(arrives(toLogind));
    EXPECT_TRUE(receiver.interactive);
}

TEST_F(Restart, TellsOfARefusalThatComesLater) {
    receiver.error = "org.freedesktop.DBus.Error.AccessDenied";
    request({});
    EXPECT_TRUE(support::waitUntil([&] { return refusals == QStringList{"not today"}; }));
    request({"org.gnome.SessionManager"});
    EXPECT_TRUE(support::waitUntil([&] { return refusals == QStringList{"not today"}; }));
    EXPECT_EQ(receiver.calls.size(), 1) << "a session manager's refusal counts";
}

TEST_F(Restart, HandsOnToLogindWhatTheSessionManagerDoesNotKnow) {
    receiver.error = "org.freedesktop.DBus.Error.UnknownMethod";
    request({"org.gnome.SessionManager"});
    EXPECT_TRUE(support::waitUntil([&] { return receiver.calls.value(1) == toLogind; }));
    EXPECT_TRUE(support::waitUntil([&] { return refusals == QStringList{"not today"}; }));
}

TEST(RestartWithoutABus, FailsAtOnceAndTestsHaveNoSystemBus) {
    const QDBusConnection none("none");
    EXPECT_EQ(platform::requestRestart(none, none, nullptr), ENOTCONN);
    const std::string address = std::getenv("DBUS_SYSTEM_BUS_ADDRESS");
    EXPECT_FALSE(QDBusConnection::connectToBus(QString::fromStdString(address), "s").isConnected());
}
