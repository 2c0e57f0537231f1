#pragma once

#include "platform/loop/Timer.h"

#include <functional>
#include <optional>

class PluginStarter;

namespace platform {
class RunLoop;
}

/// Finds out whether a plug-in applies the volumes in the window, and if not, why. A plug-in is
/// present while anything is connected to a socket or the plug-in's name is on the session bus.
/// Short absences, as during a start or a restart, are not a problem. Main thread only.
class PluginHealth {
  public:
    enum class Problem {
        none,
        noSocket,   ///< no plug-in can connect
        absent,     ///< no plug-in has been present for 2 s
        starting,   ///< a start has been requested
        notStarted, ///< the requested start had no effect
        silent,     ///< it is on the bus, but has not connected for 10 s
    };

    /// All of it must outlive the watch.
    struct Dependencies {
        std::function<bool()> isConnected;
        std::function<bool()> isOnTheBus;
        std::function<bool()> serveSocket; ///< false when that fails
        PluginStarter& starter;
        std::function<void(Problem)> show; ///< called when the problem changes
    };

    PluginHealth(platform::RunLoop& loop, Dependencies dependencies);

    /// Serves the socket and starts to watch. If serving fails, it is retried every 5 s.
    void begin();

    /// Call this, as often as needed, when a connection or the name on the bus has appeared or
    /// disappeared. Evaluated in the next turn of the loop.
    void changed() { review_.start({}); }

    /// Performs the remedy for the problem, if there is one: starts the plug-in, or tries again to
    /// serve the socket.
    void help();

    [[nodiscard]] Problem problem() const noexcept { return problem_; }

  private:
    enum class Presence { connected, onTheBus, none };

    Presence presence() const;
    void review();
    void waitAndSee();
    void endOfPatience();
    void lookWhetherItStarts();
    void start();
    void setProblem(Problem problem);

    const Dependencies dependencies_;
    Problem problem_ = Problem::none;
    std::optional<Presence> presence_; // nothing before the first evaluation
    int extensions_ = 0; // of the waiting time, while systemd is about to start the service
    platform::Timer review_;
    platform::Timer patience_;
};
