#include "platform/desktop/DesktopSettings.h"

#include "platform/bus/SessionBus.h"

#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>

#include <utility>

namespace platform {

namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interface = QStringLiteral("org.freedesktop.portal.Settings");
const QStringList askedGroups = {QStringLiteral("org.freedesktop.appearance"),
                                 QStringLiteral("org.gnome.desktop.interface"),
                                 QStringLiteral("org.gnome.desktop.a11y.interface"),
                                 QStringLiteral("org.gnome.desktop.wm.preferences")};

} // namespace

DesktopSettings& DesktopSettings::shared() {
    static auto* const settings = new DesktopSettings(sessionBus());
    return *settings;
}

/// The portal may come later than we do.
DesktopSettings::DesktopSettings(QDBusConnection bus) : bus_(std::move(bus)) {
    if (!bus_.isConnected())
        return;
    qDBusRegisterMetaType<Groups>();
    bus_.connect(service, path, interface, QStringLiteral("SettingChanged"), this,
                 SLOT(settingChanged(QDBusMessage)));
    watcher_ =
        new QDBusServiceWatcher(service, bus_, QDBusServiceWatcher::WatchForRegistration, this);
    connect(watcher_, &QDBusServiceWatcher::serviceRegistered, this, &DesktopSettings::ask);
    ask();
}

DesktopSettings::~DesktopSettings() = default;

void DesktopSettings::ask() {
    QDBusMessage question =
        QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("ReadAll"));
    question << askedGroups;
    question.setAutoStartService(false); // not for this
    auto* const call = new QDBusPendingCallWatcher(bus_.asyncCall(question), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, call] {
        call->deleteLater();
        const QDBusPendingReply<Groups> answer = *call;
        if (!answer.isValid())
            return;
        bool isAnother = false;
        const Groups groups = answer.value();
        for (auto group = groups.begin(); group != groups.end(); ++group) {
            for (auto each = group->begin(); each != group->end(); ++each)
                isAnother |= take(group.key(), each.key(), each.value());
        }
        if (isAnother)
            Q_EMIT changed();
    });
}

void DesktopSettings::settingChanged(const QDBusMessage& signal) {
    const QVariantList arguments = signal.arguments();
    if (arguments.size() == 3 && askedGroups.contains(arguments[0].toString()) &&
        take(arguments[0].toString(), arguments[1].toString(), arguments[2]))
        Q_EMIT changed();
}

/// Portals wrap values in one or more variants. Returns whether the value has changed.
bool DesktopSettings::take(const QString& group, const QString& key, QVariant value) {
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    QVariant& kept = groups_[group][key];
    if (kept == value)
        return false;
    kept = value;
    return true;
}

QVariant DesktopSettings::value(const QString& group, const QString& key) const {
    return groups_.value(group).value(key);
}

} // namespace platform
