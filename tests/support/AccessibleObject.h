#pragma once

#include "support/BusConnection.h"
#include "support/ChildProcess.h"
#include "support/PrivateBus.h"

#include <QList>
#include <QSize>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <optional>

namespace support {

/// What assistive tools see of an object of another program, over their bus. Everything is asked
/// when it is called for. A program that has ended returns empty texts and lists.
class AccessibleObject {
  public:
    /// `role` as roles are called on the bus: "list item", "slider".
    AccessibleObject(QDBusConnection bus, QString service, QString path);

    const QString& path() const noexcept { return path_; }
    QString name() const;
    QString description() const;
    QString role() const;
    QList<AccessibleObject> children() const;

    /// Itself, or the first one within it, depth first; nothing when there is none.
    std::optional<AccessibleObject> find(const QString& role, const QString& name) const;

    /// By its number in the protocol, such as 4 for "checked".
    bool hasState(unsigned state) const;

    /// In pixels.
    QSize size() const;

    double value(const char* property = "CurrentValue") const;
    void setValue(double value) const;

    /// What a tool reads out or shows in braille.
    QString text() const;

    QStringList actions() const;
    void act(const QString& action) const;

  private:
    QVariant property(const char* interface, const char* name) const;
    QVariantList call(const char* interface, const char* method,
                      const QVariantList& arguments = {}) const;

    QDBusConnection bus_;
    QString service_;
    QString path_;
};

/// The bus of assistive tools in a private session, and one such tool: ourselves. Programs that
/// are started while it lives tell it of everything.
class AssistiveTool {
  public:
    explicit AssistiveTool(const PrivateBus& session);

    QDBusConnection bus() const { return *bus_; }

    /// All programs that are on the bus.
    AccessibleObject desktop() const;

    /// The one with that title; nothing when it is not there.
    std::optional<AccessibleObject> window(const QString& title) const;

    /// Roles and names of everything, for messages.
    QString outline() const;

    /// Has programs send signals of a kind, such as "object:state-changed:checked".
    void listen(const QString& event) const;

  private:
    ChildProcess launcher_;
    const ScopedVariable wanted_{"QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1"};
    BusConnection bus_;
};

} // namespace support
