#pragma once

#include "platform/bus/BusObjects.h"

#include <QDBusConnection>

/// The helper's own object on the session bus, at /com/quarnel/TonvaleHelper: the interface
/// com.quarnel.TonvaleHelper with the property Shown, whether a host shows the icon. The
/// application hides its window only then. Main thread only.
class HelperObject final : public platform::BusObjects {
  public:
    explicit HelperObject(const QDBusConnection& bus) : bus_(bus) {}

    /// Signals a change.
    void setShown(bool isShown);

    QString introspect(const QString& path) const override;
    QDBusMessage answer(const QDBusMessage& call) override;

  private:
    QDBusMessage answerGet(const QDBusMessage& call) const;

    QDBusConnection bus_;
    bool isShown_ = false;
};
