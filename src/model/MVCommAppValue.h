#pragma once

#include <QIcon>
#include <QObject>
#include <QString>

#include <cstdint>
#include <memory>

struct MVCommConnectedProcess;

struct RunningApplication;
class Workspace;

/// The result of setActivity().
enum MVCommActivityChange : int {
    kMVCommActivityUnchanged = 0,
    kMVCommActivityEnded = 1, ///< is 0 now
    kMVCommActivityBegan = 2, ///< was 0
    kMVCommActivityMoved = 3, ///< neither was nor is 0
};

/// The record of one program that has an item in the window: it is connected through its plug-in,
/// or only runs. Holds the data that the window shows and edits; signals are emitted for real
/// changes only. Main thread only.
class MVCommAppValue final : public QObject {
    Q_OBJECT
    Q_PROPERTY(QIcon icon READ icon NOTIFY iconChanged)
    Q_PROPERTY(QString processName READ processName CONSTANT)
    Q_PROPERTY(QString displayName READ displayName CONSTANT)
    Q_PROPERTY(bool isBeeps READ isBeeps CONSTANT)
    Q_PROPERTY(bool isRunningApp READ isRunningApp CONSTANT)
    Q_PROPERTY(double volume READ volume WRITE setVolume NOTIFY volumeChanged)
    Q_PROPERTY(bool muted READ muted WRITE setMuted NOTIFY mutedChanged)
    Q_PROPERTY(qint64 activity READ activity NOTIFY activityChanged)
    Q_PROPERTY(bool hasActivity READ hasActivity NOTIFY hasActivityChanged)

  public:
    /// For a connected program; none for null.
    static std::unique_ptr<MVCommAppValue> initWithApp(const MVCommConnectedProcess* app,
                                                       const Workspace& workspace);

    /// For a running program that is not connected.
    static std::unique_ptr<MVCommAppValue> initWithRunningApp(const RunningApplication& app,
                                                              const Workspace& workspace);

    /// The displayed name: for the process of the system's sound effects its name in the user's
    /// language, else the name itself.
    static QString displayNameForProcessName(const QString& name);

    const QIcon& icon() const noexcept { return icon_; }
    const QString& processName() const noexcept { return processName_; }
    QString displayName() const { return displayNameForProcessName(processName_); }
    std::uint32_t pid() const noexcept { return pid_; }

    /// The path of its executable, else of its bundle or desktop entry; empty if unknown.
    const QString& path() const noexcept { return path_; }

    /// Whether it stands for the system's sound effects.
    bool isBeeps() const noexcept { return isBeeps_; }

    /// Whether it was created from a running program.
    bool isRunningApp() const noexcept { return isRunningApp_; }

    /// The value that the owner has set: a fraction after a user action, a percent after a restore.
    /// NaN is ignored.
    double volume() const noexcept { return volume_; }
    void setVolume(double volume);

    bool muted() const noexcept { return muted_; }
    void setMuted(bool muted);

    /// The level, 0 to 100.
    qint64 activity() const noexcept { return activity_; }
    MVCommActivityChange setActivity(qint64 activity);

    /// Whether the activity is above 0.
    bool hasActivity() const noexcept { return hasActivity_; }

    /// Updates the icon from the workspace.
    void updateIcon(const Workspace& workspace);

  Q_SIGNALS:
    void iconChanged();
    void volumeChanged(double volume);
    void mutedChanged(bool muted);
    void activityChanged(qint64 activity);
    void hasActivityChanged(bool hasActivity); ///< after activityChanged()

  private:
    friend class AppList; // which assigns a new process to a name

    static const QString& pathOf(const RunningApplication& app);

    MVCommAppValue(QIcon icon, bool isGeneric, QString processName, QString path, std::uint32_t pid,
                   bool isBeeps, bool isRunningApp);
    void setProcess(std::uint32_t pid, const QString& path);

    QIcon icon_;
    const bool isGeneric_; // the icon, since the real one is unknown
    const QString processName_;
    QString path_;
    std::uint32_t pid_;
    const bool isBeeps_;
    const bool isRunningApp_;
    double volume_ = 0;
    bool muted_ = false;
    qint64 activity_ = 0;
    bool hasActivity_ = false;
};
