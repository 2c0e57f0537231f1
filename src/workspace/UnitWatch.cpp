#include "workspace/UnitWatch.h"

#include "platform/base/ExceptionReport.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QMetaType>
#include <QObject>
#include <QString>

#include <utility>

namespace {

const QString& busName() {
    static const QString name = QStringLiteral("org.freedesktop.systemd1");
    return name;
}

const QString& objectPath() {
    static const QString path = QStringLiteral("/org/freedesktop/systemd1");
    return path;
}

const QString& interfaceName() {
    static const QString name = QStringLiteral("org.freedesktop.systemd1.Manager");
    return name;
}

} // namespace

/// Compares senders itself: the toolkit would ask the bus for the name's owner, and wait.
class UnitWatch::Receiver : public QObject {
    Q_OBJECT

  public:
    Receiver(std::function<void()> changed, QDBusConnection bus)
        : changed_(std::move(changed)), bus_(bus), watcher_(busName(), bus) {
        connect(&watcher_, &QDBusServiceWatcher::serviceOwnerChanged, this,
                [this](const QString&, const QString&, const QString& owner) {
                    manager_.clear();
                    if (!owner.isEmpty())
                        subscribe();
                });
        // The toolkit finds a slot's types by name, and calls no slot with one that it does not
        // know.
        qRegisterMetaType<QDBusObjectPath>();
        for (const char* const signal : {"UnitNew", "UnitRemoved"})
            bus.connect(QString(), objectPath(), interfaceName(), QLatin1String(signal), this,
                        SLOT(unitChanged(QString, QDBusObjectPath, QDBusMessage)));
        // A service's unit is there before the service runs.
        bus.connect(QString(), objectPath(), interfaceName(), QStringLiteral("JobRemoved"), this,
                    SLOT(jobRemoved(uint, QDBusObjectPath, QString, QString, QDBusMessage)));
        subscribe();
    }

    bool isListening() const noexcept { return !manager_.isEmpty(); }

  private Q_SLOTS:
    void unitChanged(const QString& unit, const QDBusObjectPath&, const QDBusMessage& message) {
        take(unit, message);
    }
    void jobRemoved(uint, const QDBusObjectPath&, const QString& unit, const QString&,
                    const QDBusMessage& message) {
        take(unit, message);
    }

  private:
    /// The manager sends no signals before a client subscribes.
    void subscribe() {
        auto message = QDBusMessage::createMethodCall(busName(), objectPath(), interfaceName(),
                                                      QStringLiteral("Subscribe"));
        message.setAutoStartService(false);
        auto* const answer = new QDBusPendingCallWatcher(bus_.asyncCall(message), this);
        connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
            const QDBusPendingReply<> reply = *answer;
            if (reply.isValid()) {
                manager_ = reply.reply().service();
                platform::guarded(platform::kExceptionInNotification,
                                  changed_); // what has come meanwhile
            }
            answer->deleteLater();
        });
    }

    void take(const QString& unit, const QDBusMessage& message) {
        const bool hasProcesses =
            unit.endsWith(QLatin1String(".scope")) || unit.endsWith(QLatin1String(".service"));
        if (hasProcesses && isListening() && message.service() == manager_)
            platform::guarded(platform::kExceptionInNotification, changed_);
    }

    const std::function<void()> changed_;
    QDBusConnection bus_;
    QDBusServiceWatcher watcher_;
    QString manager_; // its unique name; empty while there is none
};

UnitWatch::UnitWatch(std::function<void()> changed, const QDBusConnection& bus) {
    if (bus.isConnected())
        receiver_ = std::make_unique<Receiver>(std::move(changed), bus);
}

UnitWatch::~UnitWatch() = default;

bool UnitWatch::isListening() const noexcept {
    return receiver_ != nullptr && receiver_->isListening();
}

#include "UnitWatch.moc"
