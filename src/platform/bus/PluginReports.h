#pragma once

#include <QString>

#include <cstdint>
#include <functional>
#include <memory>

namespace platform {

/// What the audio plug-in tells on the session bus beside its socket: signals of the interface
/// com.quarnel.Tonvale.Plugin at /com/quarnel/Tonvale/Plugin, from the program that owns the name
/// com.quarnel.Tonvale.Plugin; what others send there is not heard. Never waits for the bus; hears
/// nothing without one. Main thread only.
class PluginReports {
  public:
    struct Handlers {
        /// ChangedElsewhere(u pid, i percent, b muted): another program has set a program's volume
        /// or mute. The percent is as it came.
        std::function<void(std::uint32_t pid, int percent, bool muted)> changedElsewhere;
        /// NotControllable(u pid, s reason): a program's volume cannot be set; it can again when
        /// the reason, for people, is empty.
        std::function<void(std::uint32_t pid, const QString& reason)> notControllable;
        /// The plug-in has ended: nothing of what it reported need hold any more.
        std::function<void()> gone;
    };

    /// Each handler is called from the event loop, never from the constructor. Exceptions are
    /// reported (ExceptionReport).
    explicit PluginReports(Handlers handlers);
    ~PluginReports();
    PluginReports(const PluginReports&) = delete;
    PluginReports& operator=(const PluginReports&) = delete;

  private:
    class Receiver;
    std::unique_ptr<Receiver> receiver_; // null without a bus
};

} // namespace platform
