#include "comm/PluginBusClient.h"

#include "platform/base/ExceptionReport.h"
#include "platform/base/SystemLog.h"
#include "platform/bus/BusNameOwner.h"
#include "platform/bus/SessionBus.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QObject>

#include <limits>
#include <optional>
#include <utility>
#include <vector>

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
class PluginBusClient::Receiver : public QObject {
    Q_OBJECT

  public:
    Receiver(const QDBusConnection& connection, Handlers handlers)
        : bus_(connection)
        , handlers_(std::move(handlers))
        , plugin_(bus_, busName(), [this](const QString& owner) { setOwner(owner); }) {
        registerNamedSettings();
        bus_.connect(QString(), objectPath(), busName(), QStringLiteral("ChangedElsewhere"), this,
                     SLOT(changedElsewhere(uint, int, bool, QDBusMessage)));
        bus_.connect(QString(), objectPath(), busName(), QStringLiteral("NotControllable"), this,
                     SLOT(notControllable(uint, QString, QDBusMessage)));
    }

    bool tell(const PreferencesMessage& word, Answered answered) {
        if (!isThere())
            return false;
        auto call = QDBusMessage::createMethodCall(*plugin_.owner(), objectPath(), busName(),
                                                   QStringLiteral("Remember"));
        call.setArguments({word.file, word.preferences, word.news});
        constexpr int noEnd = std::numeric_limits<int>::max();
        auto* const answer = new QDBusPendingCallWatcher(bus_.asyncCall(call, noEnd), this);
        connect(answer, &QDBusPendingCallWatcher::finished, this,
                [this, answer, answered = std::move(answered)] {
                    const QDBusPendingReply<QList<NamedSetting>> reply = *answer;
                    answer->deleteLater();
                    report(reply.error());
                    platform::guarded(platform::kExceptionInNotification, [&] {
                        answered(reply.isError() ? std::nullopt : std::optional(reply.value()));
                    });
                });
        return true;
    }

    void askCrashFolder(std::function<void(const QString& folder)> answered) {
        if (!isThere())
            return;
        const auto call = QDBusMessage::createMethodCall(*plugin_.owner(), objectPath(), busName(),
                                                         QStringLiteral("CrashFolder"));
        auto* const answer = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
        connect(answer, &QDBusPendingCallWatcher::finished, this,
                [answer, answered = std::move(answered)] {
                    const QDBusPendingReply<QString> reply = *answer;
                    answer->deleteLater();
                    if (!reply.isError()) // an older one does not know the question
                        platform::guarded(platform::kExceptionInNotification,
                                          [&] { answered(reply.value()); });
                });
    }

  private Q_SLOTS:
    void changedElsewhere(uint pid, int percent, bool muted, const QDBusMessage& message) {
        take(message.service(), [=, this] { handlers_.changedElsewhere(pid, {percent, muted}); });
    }
    void notControllable(uint pid, const QString& reason, const QDBusMessage& message) {
        take(message.service(), [=, this] { handlers_.notControllable(pid, reason); });
    }

  private:
    struct Report {
        QString sender;
        std::function<void()> tell;
    };

    bool isThere() const { return plugin_.isOwned(); }

    /// A plug-in that ends is no failure. One that refuses will refuse again.
    void report(const QDBusError& error) {
        if (error.type() != QDBusError::NoReply && error.type() != QDBusError::ServiceUnknown &&
            std::exchange(lastError_, error.name()) != error.name() && error.isValid())
            systemLog(platform::LogPriority::warning, "The plug-in refused the settings: %s",
                      qUtf8Printable(error.message()));
    }

    void take(const QString& sender, const std::function<void()>& tell) {
        constexpr std::size_t bound = 256;
        if (plugin_.owner() && sender == *plugin_.owner())
            platform::guarded(platform::kExceptionInNotification, tell);
        else if (!plugin_.owner() && early_.size() < bound)
            early_.push_back({sender, tell});
    }

    void setOwner(const QString& owner) {
        if (std::exchange(wasThere_, !owner.isEmpty()))
            platform::guarded(platform::kExceptionInNotification, handlers_.gone);
        for (const Report& report : std::exchange(early_, {}))
            take(report.sender, report.tell);
        if (isThere())
            platform::guarded(platform::kExceptionInNotification, handlers_.came);
    }

    QDBusConnection bus_;
    const Handlers handlers_;
    platform::BusNameOwner plugin_;
    bool wasThere_ = false;
    QString lastError_;
    std::vector<Report> early_; // received before the plug-in's bus name was known
};

PluginBusClient::PluginBusClient(Handlers handlers) {
    if (const QDBusConnection bus = platform::sessionBus(); bus.isConnected())
        receiver_ = std::make_unique<Receiver>(bus, std::move(handlers));
}

PluginBusClient::~PluginBusClient() = default;

bool PluginBusClient::tell(const PreferencesMessage& word, Answered answered) {
    return receiver_ != nullptr && receiver_->tell(word, std::move(answered));
}

void PluginBusClient::askCrashFolder(std::function<void(const QString& folder)> answered) {
    if (receiver_ != nullptr)
        receiver_->askCrashFolder(std::move(answered));
}

#include "PluginBusClient.moc"
