#include "platform/bus/DistributedNotification.h"

#include "platform/base/ExceptionReport.h"
#include "platform/base/SystemLog.h"
#include "platform/bus/SessionBus.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QObject>

namespace platform {

namespace {

struct SignalAddress {
    explicit SignalAddress(const QString& name)
        : interface(name.section(u'.', 0, -2))
        , member(name.section(u'.', -1))
        , path(u'/' + QString(interface).replace(u'.', u'/')) {}

    QString interface;
    QString member;
    QString path;
};

} // namespace

bool postDistributedNotification(const QString& name) {
    const SignalAddress address(name);
    QDBusConnection bus = sessionBus();
    if (bus.isConnected() &&
        bus.send(QDBusMessage::createSignal(address.path, address.interface, address.member)))
        return true;
    systemLog(LogPriority::warning, "Couldn't post %s: %s", qUtf8Printable(name),
              qUtf8Printable(bus.isConnected() ? bus.lastError().message()
                                               : QStringLiteral("no session bus")));
    return false;
}

class DistributedNotificationObserver::Receiver : public QObject {
    Q_OBJECT

  public:
    Receiver(const QString& name, std::function<void()> handler)
        : address_(name)
        , handler_(std::move(handler))
        , active_(sessionBus().connect(QString(), address_.path, address_.interface,
                                       address_.member, this, SLOT(received()))) {}

    bool isActive() const noexcept { return active_; }

  private Q_SLOTS:
    void received() { guarded(kExceptionInNotification, handler_); }

  private:
    const SignalAddress address_;
    const std::function<void()> handler_;
    const bool active_;
};

DistributedNotificationObserver::DistributedNotificationObserver(const QString& name,
                                                                 std::function<void()> handler)
    : receiver_(std::make_unique<Receiver>(name, std::move(handler))) {}

DistributedNotificationObserver::~DistributedNotificationObserver() = default;

bool DistributedNotificationObserver::isActive() const noexcept {
    return receiver_->isActive();
}

} // namespace platform

#include "DistributedNotification.moc"
