#pragma once

#include "helper/TrayTypes.h"
#include "platform/bus/BusNameOwner.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

/// A program that plays, as the application tells of it.
struct PlayingProgram {
    QString path; ///< of its bus object
    QString name; ///< as the application shows it; not trusted
    QString icon; ///< in the icon theme; may be empty
    int percent = 100;
    bool muted = false;
    bool isControllable = true;
    QString reason = {}; ///< why it is not controllable

    bool operator==(const PlayingProgram&) const = default;
};

/// The running application over its interface on the session bus: which programs play, and what it
/// can be asked for. It is never started here. Never blocks. Main thread only.
class RunningApplication final : public QObject {
    Q_OBJECT

  public:
    /// `changed` is called from the event loop when isRunning() or programs() has changed.
    RunningApplication(const QDBusConnection& bus, std::function<void()> changed);

    [[nodiscard]] bool isRunning() const noexcept { return owner_.isOwned(); }

    /// The programs that play, by name; nothing if the application does not run, or has not told
    /// yet.
    [[nodiscard]] std::optional<std::vector<PlayingProgram>> programs() const;

    void setVolume(const QString& program, int percent);
    void setMuted(const QString& program, bool isMuted);

    /// Mutes every program that plays.
    void muteAll();

    /// Shows the window, or hides it if it is the active one or was until just now. `token` lets it
    /// come to the front.
    void toggleWindow(const QString& token);
    void showWindow(const QString& token);

    /// Opens the preferences. If the application does not run yet, they open once it does, unless
    /// it ends before.
    void showPreferences(const QString& token);
    void forgetPreferences() noexcept { wantedPreferences_.reset(); } ///< it can't be started
    void quit();

  private Q_SLOTS:
    void objectsAdded(const QDBusMessage& message);
    void objectsRemoved(const QDBusObjectPath& path, const QStringList& interfaces,
                        const QDBusMessage& message);
    void propertiesChanged(const QDBusMessage& message);

  private:
    bool isOfOwner(const QDBusMessage& message) const;
    void ownerChanged(const QString& owner);
    void read(const ObjectTree& tree);
    void setProperty(const QString& program, const QString& property, const QVariant& value);
    void callApplication(const QString& method, QVariantList arguments, const QString& token);
    void callAction(const QString& action, const QString& token);
    void callMixer(const QString& method, const QVariantList& arguments = {});

    QDBusConnection bus_;
    const std::function<void()> changed_;
    std::optional<QMap<QString, QVariantMap>> programs_; // by their paths; nothing: not told yet
    std::optional<QString> wantedPreferences_;           // with which token, as soon as it has told
    std::unique_ptr<QObject> calls_;                     // owns those under way, all to one owner
    platform::BusNameOwner owner_;                       // after all that it may call
};
