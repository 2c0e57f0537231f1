#pragma once

#include "support/WaitUntil.h"

#include <QDBusConnection>
#include <QObject>
#include <QString>

#include <gtest/gtest.h>

#include <tuple>
#include <utility>
#include <vector>

/// Hears on the session bus what the plug-in tells the application.
class BusReports : public QObject {
    Q_OBJECT

  public:
    using Change = std::tuple<uint, int, bool>;

    BusReports() {
        const QString interface = "com.quarnel.Tonvale.Plugin";
        const QString path = "/com/quarnel/Tonvale/Plugin";
        EXPECT_TRUE(bus_.connect(interface, path, interface, "ChangedElsewhere", this,
                                 SLOT(changedElsewhere(uint, int, bool))));
        EXPECT_TRUE(bus_.connect(interface, path, interface, "NotControllable", this,
                                 SLOT(notControllable(uint, QString))));
    }
    ~BusReports() override { QDBusConnection::disconnectFromBus(bus_.name()); }

    std::vector<Change> changes;
    std::vector<std::pair<uint, QString>> obstacles;

    bool tellLast(uint pid, int percent, bool muted) const {
        const bool told = support::waitUntil(
            [&] { return !changes.empty() && changes.back() == Change(pid, percent, muted); });
        EXPECT_TRUE(told || changes.empty())
            << std::get<0>(changes.back()) << " " << std::get<1>(changes.back()) << " "
            << std::get<2>(changes.back());
        return told;
    }

  private Q_SLOTS:
    void changedElsewhere(uint pid, int percent, bool muted) {
        changes.emplace_back(pid, percent, muted);
    }
    void notControllable(uint pid, const QString& reason) { obstacles.emplace_back(pid, reason); }

  private:
    QDBusConnection bus_ = QDBusConnection::connectToBus(
        QString::fromLocal8Bit(qgetenv("DBUS_SESSION_BUS_ADDRESS")), "reports");
};
