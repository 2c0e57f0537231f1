#include "platform/bus/PluginReports.h"

#include "platform/bus/SessionBus.h"
#include "platform/processes/ExceptionReport.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QObject>

#include <optional>
#include <utility>
#include <vector>

namespace platform {

namespace {

const QString& busName() {
    static const QString name = QStringLiteral("com.quarnel.Tonvale.Plugin");
    return name;
}

const QString& objectPath() {
    static const QString path = QStringLiteral("/com/quarnel/Tonvale/Plugin");
    return path;
}

} // namespace

/// Compares senders itself: the toolkit would ask the bus for the name's owner, and wait.
class PluginReports::Receiver : public QObject {
    Q_OBJECT

  public:
    Receiver(QDBusConnection bus, Handlers handlers)
        : handlers_(std::move(handlers)), watcher_(busName(), bus) {
        connect(&watcher_, &QDBusServiceWatcher::serviceOwnerChanged, this,
                [this](const QString&, const QString&, const QString& owner) { setOwner(owner); });
        bus.connect(QString(), objectPath(), busName(), QStringLiteral("ChangedElsewhere"), this,
                    SLOT(changedElsewhere(uint, int, bool, QDBusMessage)));
        bus.connect(QString(), objectPath(), busName(), QStringLiteral("NotControllable"), this,
                    SLOT(notControllable(uint, QString, QDBusMessage)));
        auto* const answer = new QDBusPendingCallWatcher(
            bus.interface()->asyncCall(QStringLiteral("GetNameOwner"), busName()), this);
        connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
            const QDBusPendingReply<QString> reply = *answer;
            if (!owner_)
                setOwner(reply.isValid() ? reply.value() : QString());
            answer->deleteLater();
        });
    }

  private Q_SLOTS:
    void changedElsewhere(uint pid, int percent, bool muted, const QDBusMessage& message) {
        take(message.service(), [=, this] { handlers_.changedElsewhere(pid, percent, muted); });
    }
    void notControllable(uint pid, const QString& reason, const QDBusMessage& message) {
        take(message.service(), [=, this] { handlers_.notControllable(pid, reason); });
    }

  private:
    struct Report {
        QString sender;
        std::function<void()> tell;
    };

    void take(const QString& sender, const std::function<void()>& tell) {
        constexpr std::size_t bound = 256;
        if (owner_ && sender == *owner_)
            guarded(kExceptionInNotification, tell);
        else if (!owner_ && early_.size() < bound)
            early_.push_back({sender, tell});
    }

    void setOwner(const QString& owner) {
        if (std::exchange(owner_, owner).value_or(QString()) != QString())
            guarded(kExceptionInNotification, handlers_.gone);
        for (const Report& report : std::exchange(early_, {}))
            take(report.sender, report.tell);
    }

    const Handlers handlers_;
    QDBusServiceWatcher watcher_;
    std::optional<QString> owner_; // empty: nobody; nothing: not known yet
    std::vector<Report> early_;    // from before the owner was known
};

PluginReports::PluginReports(Handlers handlers) {
    if (const QDBusConnection bus = sessionBus(); bus.isConnected())
        receiver_ = std::make_unique<Receiver>(bus, std::move(handlers));
}

PluginReports::~PluginReports() = default;

} // namespace platform

#include "PluginReports.moc"
