#pragma once

#include "settings/PreferencesMessage.h"

#include <QList>
#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

/// Client of the audio plug-in's service on the session bus: receives the signals of the interface
/// com.quarnel.Tonvale.Plugin at /com/quarnel/Tonvale/Plugin, from the owner of the name
/// com.quarnel.Tonvale.Plugin only, and sends the preferences. Never waits for the bus; without one
/// it does nothing. Main thread only.
class PluginBusClient {
  public:
    struct Handlers {
        /// ChangedElsewhere(u pid, i percent, b muted): another program has changed a program's
        /// volume or mute. The percent is not clamped.
        std::function<void(std::uint32_t pid, const ProgramSetting&)> changedElsewhere;
        /// NotControllable(u pid, s reason): a program's volume cannot be set, with the reason as
        /// text for the user; an empty reason means that it can be set again.
        std::function<void(std::uint32_t pid, const QString& reason)> notControllable;
        /// The plug-in has ended: its earlier reports may no longer be true.
        std::function<void()> gone;
        /// The plug-in has started and can receive messages.
        std::function<void()> came = [] {};
    };

    /// The plug-in's reply: the settings for which it has newer values. Nothing: it has ended or
    /// refused.
    using Answered = std::function<void(const std::optional<QList<NamedSetting>>& newer)>;

    /// Each handler is called from the event loop, never from the constructor. Exceptions are
    /// reported (ExceptionReport).
    explicit PluginBusClient(Handlers handlers);
    ~PluginBusClient();
    PluginBusClient(const PluginBusClient&) = delete;
    PluginBusClient& operator=(const PluginBusClient&) = delete;

    /// Sends the application's preferences to the plug-in. `answered` is called from the event loop
    /// when the plug-in has replied or ended, however long that takes, but not after this object is
    /// destroyed. False, and no call, if there is no plug-in.
    [[nodiscard]] bool tell(const PreferencesMessage& word, Answered answered);

    /// Asks the plug-in for the folder of its crash reports, and calls `answered` as above, but
    /// only if it answers.
    void askCrashFolder(std::function<void(const QString& folder)> answered);

  private:
    class Receiver;
    std::unique_ptr<Receiver> receiver_; // null without a bus
};
