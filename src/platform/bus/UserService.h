#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QVariant>

#include <functional>
#include <memory>

namespace platform {

/// A service of this user's systemd manager, through the session bus. Answers come later, from the
/// event loop, without waiting for the bus; without a bus or a manager there is no such service. No
/// answer comes after the object is destroyed. Main thread only.
class UserService {
  public:
    struct State {
        bool isInstalled = false; ///< there is a unit file, which may be masked or damaged
        QString load;             ///< as systemd calls it: "loaded", "masked", "not-found"…
        QString activity;         ///< "active", "activating", "failed"…
        bool isOutdated = false;  ///< its unit file has changed since systemd read it

        /// Whether this user has a systemd manager at all.
        [[nodiscard]] bool hasManager() const { return !load.isEmpty(); }

        [[nodiscard]] bool isMasked() const { return load == QLatin1String("masked"); }

        /// Whether systemd is starting it, or has scheduled its next start.
        [[nodiscard]] bool isStarting() const { return activity == QLatin1String("activating"); }
    };

    /// `name` ends in ".service".
    UserService(QString name, const QDBusConnection& bus);

    [[nodiscard]] const QString& name() const noexcept { return name_; }

    void ask(std::function<void(const State&)> answer);

    /// Starts it, even after systemd's start limit was reached. The answer is empty if systemd has
    /// accepted, else its reason for refusing.
    void start(std::function<void(const QString& error)> answer);

    /// Links the unit file, an absolute path, into the user's configuration and enables it, for
    /// this and all later sessions. Answers as start() does.
    void enable(const QString& unitFile, std::function<void(const QString& error)> answer);

    /// Makes systemd read all unit files again. Answers as start() does.
    void reload(std::function<void(const QString& error)> answer);

    /// Stops it, and removes all links to its unit file. Answers as start() does.
    void remove(std::function<void(const QString& error)> answer);

  private:
    using Answer = std::function<void(const QString& error)>;

    void call(const QString& method, const QVariantList& arguments, Answer answer);
    void changeLinks(const QString& method, const QVariantList& arguments, Answer answer);

    const QString name_;
    QDBusConnection bus_;
    std::unique_ptr<QObject> calls_ = std::make_unique<QObject>(); // owns those under way
};

} // namespace platform
