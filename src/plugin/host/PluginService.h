#pragma once

#include <QObject>
#include <QString>

#include <functional>
#include <string>

/// The running plug-in on the session bus: com.quarnel.Tonvale.Plugin, the object
/// /com/quarnel/Tonvale/Plugin with the interface of the bus name. Slots and signals marked
/// scriptable are its methods and signals, and are told to whoever introspects. Without a session
/// bus, or when it goes, nobody can ask and nobody hears, and that is all. Main thread only.
class PluginService : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.quarnel.Tonvale.Plugin")

  public:
    static QString busName() { return QStringLiteral("com.quarnel.Tonvale.Plugin"); }
    static QString objectPath() { return QStringLiteral("/com/quarnel/Tonvale/Plugin"); }

    /// `status` answers a text for people, in UTF-8. A name that another process holds is a line in
    /// the system log.
    explicit PluginService(std::function<std::string()> status);
    ~PluginService() override;
    PluginService(const PluginService&) = delete;
    PluginService& operator=(const PluginService&) = delete;

  public Q_SLOTS:
    Q_SCRIPTABLE QString Status() const;

  Q_SIGNALS:
    /// Another mixer has set the volume or the mute of a program; above 100 percent as it is.
    Q_SCRIPTABLE void ChangedElsewhere(uint pid, int percent, bool muted);

    /// The volume of a program cannot be set, for a reason that is for people; an empty one takes
    /// that back.
    Q_SCRIPTABLE void NotControllable(uint pid, const QString& reason);

  private:
    const std::function<std::string()> status_;
};
