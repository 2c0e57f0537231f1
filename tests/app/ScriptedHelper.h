#pragma once

#include "support/BusConnection.h"

#include <QObject>
#include <QStringList>
#include <QVariantMap>

/// Stands for the helper on a bus, under a connection of its own.
class ScriptedHelper : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.quarnel.TonvaleHelper")
    Q_PROPERTY(bool Shown MEMBER shown_)

  public:
    ScriptedHelper(const std::string& address, bool isShown) : shown_(isShown), bus_(address) {
        bus_->registerObject(path, this, QDBusConnection::ExportAllProperties);
        bus_->registerService(name);
    }

    void setShown(bool isShown) {
        shown_ = isShown;
        bus_.say(path, "org.freedesktop.DBus.Properties", "PropertiesChanged",
                 {name, QVariantMap{{"Shown", isShown}}, QStringList()});
    }

  private:
    static inline const QString name = "com.quarnel.TonvaleHelper";
    static inline const QString path = "/com/quarnel/TonvaleHelper";

    bool shown_;
    support::BusConnection bus_;
};
