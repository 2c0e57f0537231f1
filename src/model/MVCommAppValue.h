#pragma once

#include <QIcon>
#include <QObject>
#include <QString>

#include <cstdint>
#include <memory>

struct MVCommConnectedProcess;

struct RunningApplication;
class Workspace;

/// What setActivity() has done.
enum MVCommActivityChange : int {
    kMVCommActivityUnchanged = 0,
    kMVCommActivityEnded = 1, ///< is 0 now
    kMVCommActivityBegan = 2, ///< was 0
    kMVCommActivityMoved = 3, ///< neither was nor is 0
};

/// One program that has an item in the window: one that is connected through its plug-in, or one
/// that runs and is not. Holds what the window shows and edits; its signals come after real changes
/// only. Main thread only.
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

    /// What a person reads: for the process of the system's sound effects its name in the person's
    /// language, else the name itself.
    static QString displayNameForProcessName(const QString& name);

    const QIcon& icon() const noexcept { return icon_; }
    const QString& processName() const noexcept { return processName_; }
    QString displayName() const { return displayNameForProcessName(processName_); }
    std::uint32_t pid() const noexcept { return pid_; }

    /// Of its executable, else of its bundle or desktop entry; empty when that is not known.
    const QString& path() const noexcept { return path_; }

    /// Whether it stands for the system's sound effects.
    bool isBeeps() const noexcept { return isBeeps_; }

    /// Whether it was made from a running program.
    bool isRunningApp() const noexcept { return isRunningApp_; }

    /// What the owner has set: a fraction after a gesture, a percent after what is remembered. Not
    /// a number is ignored.
    double volume() const noexcept { return volume_; }
    void setVolume(double volume);

    bool muted() const noexcept { return muted_; }
    void setMuted(bool muted);

    /// How loud it is, 0 to 100.
    qint64 activity() const noexcept { return activity_; }
    MVCommActivityChange setActivity(qint64 activity);

    /// Whether the activity is above 0.
    bool hasActivity() const noexcept { return hasActivity_; }

    /// Has it take the icon that the workspace has for it by now.
    void updateIcon(const Workspace& workspace);

  Q_SIGNALS:
    void iconChanged();
    void volumeChanged(double volume);
    void mutedChanged(bool muted);
    void activityChanged(qint64 activity);
    void hasActivityChanged(bool hasActivity); ///< after activityChanged()

  private:
    friend class AppList; // which finds out that a name belongs to another process now

    static const QString& pathOf(const RunningApplication& app);

    MVCommAppValue(QIcon icon, bool isGeneric, QString processName, QString path, std::uint32_t pid,
                   bool isBeeps, bool isRunningApp);
    void setProcess(std::uint32_t pid, const QString& path);

    QIcon icon_;
    const bool isGeneric_; // the icon, since nothing says which one it has
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
