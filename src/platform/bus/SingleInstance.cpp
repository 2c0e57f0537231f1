#include "platform/bus/SingleInstance.h"

#include "platform/base/ExceptionReport.h"
#include "platform/base/SystemLog.h"
#include "platform/bus/BusCallers.h"
#include "platform/bus/BusObjects.h"
#include "platform/bus/SessionBus.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QVariantMap>

#include <chrono>
#include <thread>
#include <utility>
#include <vector>

namespace platform {

namespace {

/// How often, and at what distance, one that is about to end is given the time for it.
constexpr int attempts = 30;
constexpr std::chrono::milliseconds pause{100};

constexpr int patienceForAnswer = 5000; // ms

constexpr const char* applicationInterface = "org.freedesktop.Application";
constexpr const char* introspectableInterface = "org.freedesktop.DBus.Introspectable";

QString objectPath(const QString& name) {
    return QLatin1Char('/') + QString(name).replace(QLatin1Char('.'), QLatin1Char('/'));
}

/// The token by which the desktop lets this start come to the front.
QString ownToken() {
    for (const char* const variable : {"XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"}) {
        QString token = qEnvironmentVariable(variable);
        if (!token.isEmpty())
            return token;
    }
    return {};
}

/// True when the other one has heard it.
bool activateOther(const QDBusConnection& bus, const QString& name, const QString& action) {
    const QString token = ownToken();
    QVariantMap platformData;
    if (!token.isEmpty()) {
        platformData.insert(QStringLiteral("activation-token"), token);
        platformData.insert(QStringLiteral("desktop-startup-id"), token);
    }
    auto call = QDBusMessage::createMethodCall(
        name, objectPath(name), QLatin1String(applicationInterface),
        action.isEmpty() ? QStringLiteral("Activate") : QStringLiteral("ActivateAction"));
    if (action.isEmpty())
        call.setArguments({platformData});
    else
        call.setArguments({action, QVariantList(), platformData});
    const QDBusMessage answer = bus.call(call, QDBus::Block, patienceForAnswer);
    return answer.type() == QDBusMessage::ReplyMessage;
}

} // namespace

/// The object that further starts and the desktop call, and the parent of all others.
class SingleInstance::Service : public QDBusVirtualObject {
  public:
    Service(const QDBusConnection& bus, QString name) : name_(std::move(name)), callers_(bus) {}
    ~Service() override {
        auto bus = sessionBus();
        bus.unregisterObject(objectPath(name_), QDBusConnection::UnregisterTree);
        // Without waiting for an answer: the bus may be stuck.
        auto release = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("ReleaseName"));
        release.setArguments({name_});
        bus.send(release);
    }

    enum class Start { first, second, refused };

    Start start(QDBusConnection& bus) {
        // The object comes first: callers may call as soon as they see the name.
        bus.registerVirtualObject(objectPath(name_), this, QDBusConnection::SubPath);
        QDBusConnectionInterface* const daemon = bus.interface();
        if (daemon == nullptr)
            return Start::refused; // the bus has ended meanwhile
        const auto answer =
            daemon->registerService(name_, QDBusConnectionInterface::DontQueueService,
                                    QDBusConnectionInterface::DontAllowReplacement);
        if (!answer.isValid())
            return Start::refused;
        return answer.value() == QDBusConnectionInterface::ServiceRegistered ? Start::first
                                                                             : Start::second;
    }

    QString introspect(const QString& path) const override {
        QString xml = path == objectPath(name_) ? applicationXml() : QString();
        if (objects_ != nullptr)
            guarded(kExceptionInNotification, [&] { xml += objects_->introspect(path); });
        return xml;
    }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
        callers_.ask(message.service(), [this, message, bus](bool isOurs) {
            if (!isOurs)
                send(bus, message,
                     message.createErrorReply(QDBusError::AccessDenied,
                                              QStringLiteral("Another user's")));
            else
                take(message, bus);
        });
        return true;
    }

    void serve(BusObjects* objects) {
        objects_ = objects;
        for (const auto& [message, bus] : std::exchange(early_, {}))
            take(message, bus);
    }

    void setHandlers(Activated activated, Acted acted) {
        activated_ = std::move(activated);
        acted_ = std::move(acted);
        if (!activated_ || !acted_)
            return;
        for (const QDBusMessage& message : std::exchange(earlyStarts_, {}))
            activate(message);
    }

    Activated activated_;
    Acted acted_;

  private:
    static QString applicationXml() {
        return QStringLiteral(R"(<interface name="org.freedesktop.Application">
  <method name="Activate"><arg type="a{sv}" name="platform_data" direction="in"/></method>
  <method name="Open"><arg type="as" name="uris" direction="in"/>
    <arg type="a{sv}" name="platform_data" direction="in"/></method>
  <method name="ActivateAction"><arg type="s" name="action_name" direction="in"/>
    <arg type="av" name="parameter" direction="in"/>
    <arg type="a{sv}" name="platform_data" direction="in"/></method>
</interface>
)");
    }

    static void send(const QDBusConnection& bus, const QDBusMessage& call,
                     const QDBusMessage& answer) {
        if (call.isReplyRequired())
            bus.send(answer);
    }

    void take(const QDBusMessage& message, const QDBusConnection& bus) {
        constexpr std::size_t bound = 256;
        if (message.interface() == QLatin1String(applicationInterface) &&
            message.path() == objectPath(name_)) {
            send(bus, message, message.createReply());
            if (activated_ || acted_)
                activate(message);
            else if (earlyStarts_.size() < bound)
                earlyStarts_.push_back(message);
        } else if (message.interface() == QLatin1String(introspectableInterface)) {
            send(bus, message, introspection(message));
        } else if (objects_ != nullptr) {
            guarded(kExceptionInNotification,
                    [&] { send(bus, message, objects_->answer(message)); });
        } else if (early_.size() < bound) {
            early_.emplace_back(message, bus); // a start, and what it serves, takes a moment
        }
    }

    QDBusMessage introspection(const QDBusMessage& call) const {
        const QString inside = introspect(call.path());
        if (inside.isEmpty())
            return call.createErrorReply(QDBusError::UnknownObject,
                                         QStringLiteral("There is no such object"));
        return call.createReply(QStringLiteral(R"(<!DOCTYPE node PUBLIC
 "-//freedesktop//DTD D-BUS Object Introspection 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/introspect.dtd">
<node>
<interface name="org.freedesktop.DBus.Introspectable">
  <method name="Introspect"><arg type="s" name="xml_data" direction="out"/></method>
</interface>
%1</node>
)")
                                    .arg(inside));
    }

    void activate(const QDBusMessage& message) const {
        QVariantMap data;
        if (!message.arguments().isEmpty())
            data = qdbus_cast<QVariantMap>(message.arguments().constLast());
        QString token = data.value(QStringLiteral("activation-token")).toString();
        if (token.isEmpty())
            token = data.value(QStringLiteral("desktop-startup-id")).toString();
        guarded(kExceptionInNotification, [&] {
            const bool isDone = message.member() == QLatin1String("ActivateAction") && acted_ &&
                                acted_(message.arguments().value(0).toString(), token);
            if (!isDone && activated_)
                activated_(token);
        });
    }

    const QString name_;
    BusCallers callers_;
    BusObjects* objects_ = nullptr;
    std::vector<std::pair<QDBusMessage, QDBusConnection>> early_; // from before there were objects
    std::vector<QDBusMessage> earlyStarts_;                       // from before there were handlers
};

SingleInstance::SingleInstance(const QString& name) : lock_(name.toStdString()) {}
SingleInstance::~SingleInstance() = default;

std::unique_ptr<SingleInstance> SingleInstance::acquire(const QString& name,
                                                        const QString& action) {
    std::unique_ptr<SingleInstance> made(new SingleInstance(name));
    for (int attempt = 0; attempt < attempts; ++attempt) {
        if (attempt > 0)
            std::this_thread::sleep_for(pause);
        switch (made->tryOnce(name, action)) {
        case Outcome::acquired:
            return made;
        case Outcome::handedOver:
            return nullptr;
        case Outcome::otherIsSilent:
            break;
        }
    }
    systemLog(LogPriority::warning, "Another one is running, but can't be asked to show itself");
    return nullptr;
}

/// The name receives further starts; the lock also works if the bus was lost.
SingleInstance::Outcome SingleInstance::tryOnce(const QString& name, const QString& action) {
    auto bus = sessionBus();
    if (bus.isConnected()) {
        auto service = std::make_unique<Service>(bus, name);
        const Service::Start start = service->start(bus);
        if (start == Service::Start::second)
            return activateOther(bus, name, action) ? Outcome::handedOver : Outcome::otherIsSilent;
        if (start == Service::Start::first)
            service_ = std::move(service);
    }
    if (lock_.take())
        return Outcome::acquired;
    service_.reset();
    return Outcome::otherIsSilent;
}

void SingleInstance::onActivation(Activated activated) {
    if (service_)
        service_->setHandlers(std::move(activated), service_->acted_);
}

void SingleInstance::onAction(Acted acted) {
    if (service_)
        service_->setHandlers(service_->activated_, std::move(acted));
}

void SingleInstance::serve(BusObjects* objects) {
    if (service_)
        service_->serve(objects);
}

} // namespace platform
