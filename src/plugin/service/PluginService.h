#pragma once

#include "platform/bus/BusCallers.h"
#include "platform/bus/BusNameOwner.h"
#include "plugin/memory/ApplicationPreferences.h"
#include "settings/PreferencesMessage.h"

#include <QByteArray>
#include <QDBusContext>
#include <QDBusMessage>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

/// The plug-in's service on the session bus: com.quarnel.Tonvale.Plugin, the object
/// /com/quarnel/Tonvale/Plugin with the interface of the bus name. Slots and signals marked
/// scriptable are its methods and signals, and appear in introspection. Without a session bus it
/// does nothing. Main thread only.
class PluginService : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.quarnel.Tonvale.Plugin")

  public:
    static QString busName() { return QStringLiteral("com.quarnel.Tonvale.Plugin"); }
    static QString objectPath() { return QStringLiteral("/com/quarnel/Tonvale/Plugin"); }

    struct Handlers {
        /// A text for the user, in UTF-8.
        std::function<std::string()> status;
        /// See VolumeMemory. Called only for the application, the owner of com.quarnel.Tonvale, and
        /// only if it belongs to this user.
        std::function<std::optional<NamedSettings>(const std::string& file,
                                                   std::string_view preferences,
                                                   std::span<const std::string> news)>
            told;
        std::function<void(bool isThere)> applicationChanged;
    };

    /// Handlers are called from the event loop. A name that another process holds is a line in the
    /// system log.
    explicit PluginService(Handlers handlers);
    ~PluginService() override;
    PluginService(const PluginService&) = delete;
    PluginService& operator=(const PluginService&) = delete;

  public Q_SLOTS:
    Q_SCRIPTABLE QString Status() const;

    /// Where the plug-in leaves a report when it crashes; empty for nowhere.
    Q_SCRIPTABLE QString CrashFolder() const;

    /// The application sends its stored settings: the file, the property list, and the names that
    /// are new in it. Returns settings that were made while an earlier application was running that
    /// could not save them.
    Q_SCRIPTABLE QList<NamedSetting> Remember(const QString& file, const QByteArray& preferences,
                                              const QStringList& news);

  Q_SIGNALS:
    /// Another mixer has changed the volume or mute of a program; may be above 100 percent.
    Q_SCRIPTABLE void ChangedElsewhere(uint pid, int percent, bool muted);

    /// The volume of a program cannot be set, with the reason as text for the user; an empty one
    /// means that it can be set again.
    Q_SCRIPTABLE void NotControllable(uint pid, const QString& reason);

  private:
    struct Application {
        Application(const QDBusConnection& bus, std::function<void(const QString& owner)> changed)
            : name(bus, QStringLiteral("com.quarnel.Tonvale"), std::move(changed)), callers(bus) {}

        platform::BusNameOwner name;
        platform::BusCallers callers;
    };

    QDBusMessage answer(const QDBusMessage& call, bool isOfThisUser) const;
    QDBusMessage remember(const QDBusMessage& call) const;

    const Handlers handlers_;
    std::unique_ptr<Application> application_; // null without a bus
};
