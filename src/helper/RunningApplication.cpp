#include "helper/RunningApplication.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <algorithm>
#include <utility>

namespace {

const QString name = QStringLiteral("com.quarnel.Tonvale");
const QString root = QStringLiteral("/com/quarnel/Tonvale");
const QString programInterface = QStringLiteral("com.quarnel.Tonvale.Program");
const QString mixerInterface = QStringLiteral("com.quarnel.Tonvale.Mixer");
const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
const QString managerInterface = QStringLiteral("org.freedesktop.DBus.ObjectManager");

QDBusMessage callOf(const QString& path, const QString& interface, const QString& method,
                    const QVariantList& arguments) {
    QDBusMessage call = QDBusMessage::createMethodCall(name, path, interface, method);
    call.setAutoStartService(false);
    call.setArguments(arguments);
    return call;
}

PlayingProgram programOf(const QString& path, const QVariantMap& properties) {
    const auto value = [&](const char* key) { return properties.value(QLatin1String(key)); };
    return {.path = path,
            .name = value("Name").toString(),
            .icon = value("IconName").toString(),
            .percent = std::clamp(value("Volume").toInt(), 0, 100),
            .muted = value("Muted").toBool(),
            .isControllable = value("Controllable").toBool(),
            .reason = value("Reason").toString()};
}

} // namespace

RunningApplication::RunningApplication(const QDBusConnection& bus, std::function<void()> changed)
    : bus_(bus)
    , changed_(std::move(changed))
    , owner_(bus, name, [this](const QString& owner) { ownerChanged(owner); }) {
    // With the name, the toolkit would wait for its owner, and abort on a bus that has just ended.
    bus_.connect(QString(), root, managerInterface, QStringLiteral("InterfacesAdded"), this,
                 SLOT(objectsAdded(QDBusMessage)));
    bus_.connect(QString(), root, managerInterface, QStringLiteral("InterfacesRemoved"), this,
                 SLOT(objectsRemoved(QDBusObjectPath, QStringList, QDBusMessage)));
    bus_.connect(QString(), QString(), propertiesInterface, QStringLiteral("PropertiesChanged"),
                 {programInterface}, QString(), this, SLOT(propertiesChanged(QDBusMessage)));
}

bool RunningApplication::isOfOwner(const QDBusMessage& message) const {
    return programs_ && message.service() == owner_.owner();
}

void RunningApplication::ownerChanged(const QString& owner) {
    calls_ = std::make_unique<QObject>();
    programs_.reset();
    changed_();
    if (owner.isEmpty()) {
        wantedPreferences_.reset();
        return;
    }
    const auto call = callOf(root, managerInterface, QStringLiteral("GetManagedObjects"), {});
    auto* const watcher = new QDBusPendingCallWatcher(bus_.asyncCall(call), calls_.get());
    connect(watcher, &QDBusPendingCallWatcher::finished, calls_.get(), [this, watcher] {
        watcher->deleteLater();
        const QDBusPendingReply<ObjectTree> reply = *watcher;
        if (reply.isValid())
            read(reply.value());
    });
}

void RunningApplication::read(const ObjectTree& tree) {
    programs_.emplace();
    for (auto [path, interfaces] : tree.asKeyValueRange()) {
        if (interfaces.contains(programInterface))
            programs_->insert(path.path(), interfaces.value(programInterface));
    }
    if (const auto token = std::exchange(wantedPreferences_, std::nullopt))
        showPreferences(*token);
    changed_();
}

/// Qt finds no slot for the type of the interfaces.
void RunningApplication::objectsAdded(const QDBusMessage& message) {
    if (!isOfOwner(message) || message.signature() != QLatin1String("oa{sa{sv}}"))
        return;
    const auto path = qdbus_cast<QDBusObjectPath>(message.arguments()[0]);
    const auto interfaces = qdbus_cast<ObjectInterfaces>(message.arguments()[1]);
    if (!interfaces.contains(programInterface))
        return;
    programs_->insert(path.path(), interfaces.value(programInterface));
    changed_();
}

void RunningApplication::objectsRemoved(const QDBusObjectPath& path, const QStringList& interfaces,
                                        const QDBusMessage& message) {
    if (isOfOwner(message) && interfaces.contains(programInterface) &&
        programs_->remove(path.path()) > 0)
        changed_();
}

void RunningApplication::propertiesChanged(const QDBusMessage& message) {
    if (!isOfOwner(message) || message.arguments().size() < 2 ||
        message.arguments()[0].toString() != programInterface)
        return;
    const auto found = programs_->find(message.path());
    if (found == programs_->end())
        return;
    found->insert(qdbus_cast<QVariantMap>(message.arguments()[1]));
    changed_();
}

std::optional<std::vector<PlayingProgram>> RunningApplication::programs() const {
    if (!programs_)
        return std::nullopt;
    std::vector<PlayingProgram> playing;
    for (auto [path, properties] : programs_->asKeyValueRange()) {
        if (properties.value(QStringLiteral("Playing")).toBool())
            playing.push_back(programOf(path, properties));
    }
    std::ranges::stable_sort(playing, [](const PlayingProgram& one, const PlayingProgram& other) {
        return one.name.compare(other.name, Qt::CaseInsensitive) < 0;
    });
    return playing;
}

void RunningApplication::setVolume(const QString& program, int percent) {
    setProperty(program, QStringLiteral("Volume"), percent);
}

void RunningApplication::setMuted(const QString& program, bool isMuted) {
    setProperty(program, QStringLiteral("Muted"), isMuted);
}

void RunningApplication::setProperty(const QString& program, const QString& property,
                                     const QVariant& value) {
    bus_.send(callOf(program, propertiesInterface, QStringLiteral("Set"),
                     {programInterface, property, QVariant::fromValue(QDBusVariant(value))}));
}

void RunningApplication::callMixer(const QString& method, const QVariantList& arguments) {
    bus_.send(callOf(root, mixerInterface, method, arguments));
}

void RunningApplication::toggleWindow(const QString& token) {
    callMixer(QStringLiteral("ToggleWindow"), {token});
}

void RunningApplication::callApplication(const QString& method, QVariantList arguments,
                                         const QString& token) {
    QVariantMap platformData;
    if (!token.isEmpty())
        platformData.insert(QStringLiteral("activation-token"), token);
    arguments.append(platformData);
    bus_.send(callOf(root, QStringLiteral("org.freedesktop.Application"), method, arguments));
}

void RunningApplication::showWindow(const QString& token) {
    callApplication(QStringLiteral("Activate"), {}, token);
}

void RunningApplication::callAction(const QString& action, const QString& token) {
    callApplication(QStringLiteral("ActivateAction"), {action, QVariant(QVariantList())}, token);
}

/// What has not told yet may not take actions yet either.
void RunningApplication::showPreferences(const QString& token) {
    if (!programs_)
        wantedPreferences_ = token;
    else
        callAction(QStringLiteral("preferences"), token);
}

void RunningApplication::muteAll() {
    callAction(QStringLiteral("mute-all"), {});
}

void RunningApplication::quit() {
    callMixer(QStringLiteral("Quit"));
}
