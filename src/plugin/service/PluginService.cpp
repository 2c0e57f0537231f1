#include "plugin/service/PluginService.h"

#include "platform/base/ExceptionReport.h"
#include "platform/base/SystemLog.h"
#include "platform/bus/SessionBus.h"
#include "platform/crash/CrashFolder.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusError>

#include <numeric>
#include <utility>
#include <vector>

namespace {

QList<NamedSetting> onBus(const NamedSettings& settings) {
    QList<NamedSetting> list;
    for (const auto& [name, setting] : settings)
        list.append({QString::fromStdString(name), setting});
    return list;
}

/// Reading more would keep new streams waiting.
bool isWithinBounds(const QByteArray& preferences, const QStringList& news) {
    const auto size = std::accumulate(
        news.begin(), news.end(), preferences.size(),
        [](qsizetype sum, const QString& name) { return sum + name.toUtf8().size() + 1; });
    return size <= PreferencesMessage::longest;
}

} // namespace

PluginService::PluginService(Handlers handlers) : handlers_(std::move(handlers)) {
    QDBusConnection bus = platform::sessionBus();
    if (!bus.isConnected())
        return;
    registerNamedSettings();
    // Before the name, which the application waits for: so its owner is known when it calls.
    application_ = std::make_unique<Application>(
        bus, [this](const QString& owner) { handlers_.applicationChanged(!owner.isEmpty()); });
    // The object comes first: callers may call as soon as they see the name.
    if (bus.registerObject(objectPath(), this,
                           QDBusConnection::ExportScriptableSlots |
                               QDBusConnection::ExportScriptableSignals) &&
        bus.registerService(busName()))
        return;
    platform::systemLog(platform::LogPriority::warning,
                        "The status is not available on the bus: %s",
                        bus.lastError().isValid() ? qUtf8Printable(bus.lastError().message())
                                                  : "another process has our name on the bus");
}

PluginService::~PluginService() {
    platform::sessionBus().unregisterObject(objectPath()); // the name goes with the connection
}

QString PluginService::Status() const {
    QString text;
    platform::guarded(platform::kExceptionInNotification,
                      [&] { text = QString::fromStdString(handlers_.status()); });
    return text;
}

QString PluginService::CrashFolder() const {
    return QString::fromStdString(platform::crashFolder());
}

QList<NamedSetting> PluginService::Remember(const QString&, const QByteArray&, const QStringList&) {
    setDelayedReply(true);
    application_->callers.ask(message().service(),
                              [this, call = message(), bus = connection()](bool isOfThisUser) {
                                  platform::guarded(platform::kExceptionInNotification,
                                                    [&] { bus.send(answer(call, isOfThisUser)); });
                              });
    return {};
}

QDBusMessage PluginService::answer(const QDBusMessage& call, bool isOfThisUser) const {
    if (!isOfThisUser || application_->name.owner() != call.service())
        return call.createErrorReply(QDBusError::AccessDenied,
                                     QStringLiteral("Only this user's Tonvale may call this"));
    return remember(call);
}

QDBusMessage PluginService::remember(const QDBusMessage& call) const {
    const auto arguments = call.arguments();
    const QByteArray preferences = arguments[1].toByteArray();
    const QStringList names = arguments[2].toStringList();
    std::optional<NamedSettings> newer;
    if (isWithinBounds(preferences, names)) {
        std::vector<std::string> news;
        for (const QString& name : names)
            news.push_back(name.toStdString());
        newer = handlers_.told(arguments[0].toString().toStdString(),
                               {preferences.data(), static_cast<std::size_t>(preferences.size())},
                               news);
    } else {
        handlers_.applicationChanged(false); // we know no longer what it remembers
    }
    if (!newer)
        return call.createErrorReply(QDBusError::InvalidArgs,
                                     QStringLiteral("Not a property list, or longer than 1 MiB"));
    return call.createReply(QVariant::fromValue(onBus(*newer)));
}
