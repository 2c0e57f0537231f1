#pragma once

#include "settings/PreferencesMessage.h"

#include <QList>
#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

/// What the audio plug-in tells on the session bus beside its socket: signals of the interface
/// com.quarnel.Tonvale.Plugin at /com/quarnel/Tonvale/Plugin, from the program that owns the name
/// com.quarnel.Tonvale.Plugin; what others send there is not heard. And what it is told there.
/// Never waits for the bus; hears nothing without one. Main thread only.
class PluginBusClient {
  public:
    struct Handlers {
        /// ChangedElsewhere(u pid, i percent, b muted): another program has set a program's volume
        /// or mute. The percent is as it came.
        std::function<void(std::uint32_t pid, const ProgramSetting&)> changedElsewhere;
        /// NotControllable(u pid, s reason): a program's volume cannot be set; it can again when
        /// the reason, for people, is empty.
        std::function<void(std::uint32_t pid, const QString& reason)> notControllable;
        /// The plug-in has ended: nothing of what it reported need hold any more.
        std::function<void()> gone;
        /// The plug-in is there, and can be told something.
        std::function<void()> came = [] {};
    };

    /// The plug-in's answer: what it knows newer than it was told. Nothing: it has gone or refused.
    using Answered = std::function<void(const std::optional<QList<NamedSetting>>& newer)>;

    /// Each handler is called from the event loop, never from the constructor. Exceptions are
    /// reported (ExceptionReport).
    explicit PluginBusClient(Handlers handlers);
    ~PluginBusClient();
    PluginBusClient(const PluginBusClient&) = delete;
    PluginBusClient& operator=(const PluginBusClient&) = delete;

    /// Tells the plug-in the application's word. `answered` is called from the event loop, once it
    /// has answered or gone, however long that takes; not after this object has gone. False, and no
    /// call, when there is no plug-in.
    bool tell(const PreferencesMessage& word, Answered answered);

  private:
    class Receiver;
    std::unique_ptr<Receiver> receiver_; // null without a bus
};
