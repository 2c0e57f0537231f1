#pragma once

#include "helper/TrayTypes.h"
#include "support/BusConnection.h"
#include "support/Files.h"
#include "support/PrivateBus.h"
#include "support/PrivateFolder.h"
#include "support/WaitUntil.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusVirtualObject>
#include <QObject>
#include <QStringList>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

// What is around the icon: a watcher, a host, the application, and the tool for the volume, all as
// the test says.

/// The bus of the test program, which Qt opens once.
inline const support::PrivateBus& trayBus() {
    static const support::PrivateBus bus;
    return bus;
}

/// The reply or error, while this thread serves the one who is asked.
inline QDBusMessage ask(const QDBusConnection& bus, const QString& service, const QString& path,
                        const QString& interface, const QString& method,
                        const QVariantList& arguments = {}) {
    auto call = QDBusMessage::createMethodCall(service, path, interface, method);
    call.setArguments(arguments);
    const QDBusPendingCall pending = bus.asyncCall(call);
    static_cast<void>(support::waitUntil([&] { return pending.isFinished(); }));
    return pending.reply();
}

/// Stands for the session manager's command line tool.
class FakeVolumeTool {
  public:
    FakeVolumeTool() {
        say("Volume: 0.40");
        const auto program = folder_.path() / "wpctl";
        std::ofstream(program) << "#!/bin/sh\ncd '" << folder_.path().string()
                               << "'\necho \"$*\" >>calls\n"
                                  "[ \"$1\" = get-volume ] && cat volume\ntrue\n";
        std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    }

    QString path() const { return QString::fromStdString(folder_.path() / "wpctl"); }
    void say(const std::string& text) { std::ofstream(folder_.path() / "volume") << text << '\n'; }
    void remove() { std::filesystem::remove(folder_.path() / "wpctl"); }
    std::string calls() const { return support::contentOf(folder_.path() / "calls"); }

  private:
    const support::PrivateFolder folder_;
};

/// The desktop's watcher of tray icons, under a connection of its own.
class ScriptedWatcher : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered MEMBER hasHost)

  public:
    explicit ScriptedWatcher(bool withHost) : hasHost(withHost) {
        bus_->registerObject("/StatusNotifierWatcher", this,
                             QDBusConnection::ExportAllSlots |
                                 QDBusConnection::ExportAllProperties |
                                 QDBusConnection::ExportAllSignals);
        bus_->registerService("org.kde.StatusNotifierWatcher");
    }

    bool hasHost;
    QStringList items;
    const QDBusConnection& bus() const { return *bus_; }

  public Q_SLOTS:
    void RegisterStatusNotifierItem(const QString& service) { items.append(service); }

  Q_SIGNALS:
    void StatusNotifierHostRegistered();
    void StatusNotifierHostUnregistered();

  private:
    support::BusConnection bus_{trayBus().address()};
};

/// The application on the bus: has the programs that the test puts there, and keeps what it is
/// asked for.
class ScriptedApplication : public QDBusVirtualObject {
    Q_OBJECT

  public:
    explicit ScriptedApplication(ObjectTree programs = {}) : programs_(std::move(programs)) {
        registerTrayTypes();
        bus_->registerVirtualObject(root, this, QDBusConnection::SubPath);
        bus_->registerService("com.quarnel.Tonvale");
    }

    static QString pathOf(const QString& name) { return root + "/programs/" + name; }

    static ObjectInterfaces program(const QString& name, int percent, bool isPlaying,
                                    const QString& reason = {}) {
        return {{interface,
                 {{"Name", name},
                  {"IconName", "audio-player"},
                  {"Volume", percent},
                  {"Muted", false},
                  {"Playing", isPlaying},
                  {"Controllable", reason.isEmpty()},
                  {"Reason", reason}}}};
    }

    void add(const QString& name, const ObjectInterfaces& program) {
        bus_.say(
            root, manager, "InterfacesAdded",
            {QVariant::fromValue(QDBusObjectPath(pathOf(name))), QVariant::fromValue(program)});
    }

    void remove(const QString& name) {
        bus_.say(root, manager, "InterfacesRemoved",
                 {QVariant::fromValue(QDBusObjectPath(pathOf(name))), QStringList{interface}});
    }

    void change(const QString& name, const QVariantMap& properties) {
        bus_.say(pathOf(name), "org.freedesktop.DBus.Properties", "PropertiesChanged",
                 {interface, properties, QStringList()});
    }

    QString introspect(const QString& /*path*/) const override { return {}; }

    bool handleMessage(const QDBusMessage& call, const QDBusConnection& bus) override {
        if (call.member() == "GetManagedObjects") {
            bus.send(call.createReply(QVariant::fromValue(programs_)));
            return true;
        }
        QString text = call.member();
        if (call.member() == "Set")
            text = call.path().section('/', -1) + " " + call.arguments()[1].toString() + " " +
                   qvariant_cast<QDBusVariant>(call.arguments()[2]).variant().toString();
        else if (call.member().startsWith("Activate"))
            text += (call.signature() == "sava{sv}" ? " " + call.arguments()[0].toString() : "") +
                    " " +
                    qdbus_cast<QVariantMap>(call.arguments().last())["activation-token"].toString();
        else if (!call.arguments().isEmpty())
            text += " " + call.arguments()[0].toString();
        calls.append(text);
        bus.send(call.createReply());
        return true;
    }

    QStringList calls;

  private:
    static inline const QString root = "/com/quarnel/Tonvale";
    static inline const QString interface = "com.quarnel.Tonvale.Program";
    static inline const QString manager = "org.freedesktop.DBus.ObjectManager";

    support::BusConnection bus_{trayBus().address()};
    const ObjectTree programs_;
};
