#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

namespace platform {

/// Starts programs that go on when this one ends, and also when the unit ends that it belongs to:
/// in a transient unit of this user's systemd manager or, if there is none, in a session of their
/// own. Main thread only.
class ProgramLauncher {
  public:
    struct Program {
        QString name;               ///< "com.quarnel.Tonvale", for the name of the unit
        QString program;            ///< its path
        QStringList variables = {}; ///< "NAME=value", in addition to those of this session
    };

    /// Receives an empty text once the program has been started, else the reason.
    using Answer = std::function<void(const QString& error)>;

    explicit ProgramLauncher(const QDBusConnection& bus) : bus_(bus) {}

    /// Calls `answer` at once or from the event loop; not after the object is destroyed, when the
    /// program may still be started by the manager, but not otherwise.
    void launch(const Program& program, Answer answer);

  private:
    QDBusConnection bus_;
    std::unique_ptr<QObject> calls_ = std::make_unique<QObject>(); // owns those under way
};

} // namespace platform
