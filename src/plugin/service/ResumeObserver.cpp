#include "plugin/service/ResumeObserver.h"

#include "platform/base/ExceptionReport.h"
#include "platform/base/SystemLog.h"

#include <QObject>

class ResumeObserver::Receiver : public QObject {
    Q_OBJECT

  public:
    Receiver(std::function<void()> handler, QDBusConnection bus) : handler_(std::move(handler)) {
        if (!bus.isConnected())
            return;
        bus.connect(QStringLiteral("org.freedesktop.login1"),
                    QStringLiteral("/org/freedesktop/login1"),
                    QStringLiteral("org.freedesktop.login1.Manager"),
                    QStringLiteral("PrepareForSleep"), this, SLOT(prepareForSleep(bool)));
        bus.connect({}, QStringLiteral("/org/freedesktop/DBus/Local"),
                    QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"),
                    this, SLOT(lost()));
    }

  private Q_SLOTS:
    void prepareForSleep(bool fallsAsleep) {
        if (!fallsAsleep)
            platform::guarded(platform::kExceptionInNotification, handler_);
    }

    void lost() {
        systemLog(platform::LogPriority::warning,
                  "The system bus was lost; resuming from sleep is not detected any more");
    }

  private:
    const std::function<void()> handler_;
};

ResumeObserver::ResumeObserver(std::function<void()> handler, const QDBusConnection& bus)
    : receiver_(std::make_unique<Receiver>(std::move(handler), bus)) {}

ResumeObserver::~ResumeObserver() = default;

#include "ResumeObserver.moc"
