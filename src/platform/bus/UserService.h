#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>

namespace platform {

/// A service of this user's systemd manager, by way of the session bus. Every question is answered
/// later, from the event loop, and the bus is never waited for; without a bus or a manager there is
/// no such service. No answer comes after the object has gone. Main thread only.
class UserService {
  public:
    struct State {
        bool isInstalled = false; ///< there is a unit file, which may be masked or damaged
        QString load;             ///< as systemd calls it: "loaded", "masked", "not-found"…
        QString activity;         ///< "active", "activating", "failed"…

        /// Whether systemd starts it at the moment, or has it wait for its next start.
        bool isStarting() const { return activity == QLatin1String("activating"); }
    };

    /// `name` ends in ".service".
    UserService(QString name, const QDBusConnection& bus);

    const QString& name() const noexcept { return name_; }

    void ask(std::function<void(const State&)> answer);

    /// Starts it, also after as many failures as systemd allows. The answer is empty when systemd
    /// has agreed to try, else its reason for not doing so.
    void start(std::function<void(const QString& error)> answer);

  private:
    const QString name_;
    QDBusConnection bus_;
    std::unique_ptr<QObject> calls_ = std::make_unique<QObject>(); // owns those under way
};

} // namespace platform
