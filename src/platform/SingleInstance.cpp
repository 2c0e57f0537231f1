#include "platform/SingleInstance.h"

#include "platform/Directories.h"
#include "platform/ExceptionReport.h"
#include "platform/SystemLog.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QVariantMap>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>

namespace platform {

namespace {

constexpr const char* applicationInterface = "org.freedesktop.Application";

QString objectPath(const QString& name) {
    return QLatin1Char('/') + QString(name).replace(QLatin1Char('.'), QLatin1Char('/'));
}

/// The token by which the desktop lets this start come to the front.
QString ownToken() {
    for (const char* const variable : {"XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"}) {
        const QString token = qEnvironmentVariable(variable);
        if (!token.isEmpty())
            return token;
    }
    return {};
}

void activateOther(const QDBusConnection& bus, const QString& name) {
    const QString token = ownToken();
    QVariantMap platformData;
    if (!token.isEmpty()) {
        platformData.insert(QStringLiteral("activation-token"), token);
        platformData.insert(QStringLiteral("desktop-startup-id"), token);
    }
    auto call = QDBusMessage::createMethodCall(
        name, objectPath(name), QLatin1String(applicationInterface), QStringLiteral("Activate"));
    call.setArguments({platformData});
    constexpr int patience = 5000; // ms; a busy program, not a dead one, since it owns its name
    const QDBusMessage answer = bus.call(call, QDBus::Block, patience);
    if (answer.type() == QDBusMessage::ErrorMessage)
        systemLog(LogPriority::warning, "The program that runs already doesn't answer: %s",
                  qUtf8Printable(answer.errorMessage()));
}

/// Without a folder for it every start is the first.
bool lockFile(const QString& name, FileDescriptor& lock) {
    const std::string folder = runtimeDirectory();
    if (folder.empty())
        return true;
    const std::string path = folder + "/" + name.toStdString() + ".lock";
    lock.reset(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    return !lock || ::flock(lock.get(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

} // namespace

/// The object that other starts, and the desktop, call.
class SingleInstance::Service : public QDBusVirtualObject {
  public:
    explicit Service(QString name) : name_(std::move(name)) {}
    ~Service() override {
        auto bus = QDBusConnection::sessionBus();
        bus.unregisterObject(objectPath(name_));
        bus.unregisterService(name_);
    }

    /// True when the name is ours.
    bool start(QDBusConnection& bus) {
        // The object comes first: whoever sees the name may call at once.
        bus.registerVirtualObject(objectPath(name_), this);
        const auto answer =
            bus.interface()->registerService(name_, QDBusConnectionInterface::DontQueueService,
                                             QDBusConnectionInterface::DontAllowReplacement);
        return answer.isValid() && answer.value() == QDBusConnectionInterface::ServiceRegistered;
    }

    QString introspect(const QString& /*path*/) const override {
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

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.interface() != QLatin1String(applicationInterface))
            return false;
        connection.send(message.createReply());
        QVariantMap data;
        if (!message.arguments().isEmpty())
            data = qdbus_cast<QVariantMap>(message.arguments().constLast());
        QString token = data.value(QStringLiteral("activation-token")).toString();
        if (token.isEmpty())
            token = data.value(QStringLiteral("desktop-startup-id")).toString();
        if (activated_)
            guarded(kExceptionInNotification, [&] { activated_(token); });
        return true;
    }

    Activated activated_;

  private:
    const QString name_;
};

SingleInstance::SingleInstance() = default;
SingleInstance::~SingleInstance() = default;

std::unique_ptr<SingleInstance> SingleInstance::acquire(const QString& name) {
    std::unique_ptr<SingleInstance> made(new SingleInstance);
    auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        if (lockFile(name, made->lock_))
            return made;
        systemLog(LogPriority::info, "Another one is running; without a session bus it can't be "
                                     "asked to show itself");
        return nullptr;
    }
    made->service_ = std::make_unique<Service>(name);
    if (made->service_->start(bus))
        return made;
    activateOther(bus, name);
    return nullptr;
}

void SingleInstance::onActivation(Activated activated) {
    if (service_)
        service_->activated_ = std::move(activated);
}

} // namespace platform
