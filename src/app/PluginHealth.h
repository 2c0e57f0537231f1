#pragma once

#include "platform/loop/Timer.h"

#include <functional>
#include <optional>

class PluginStarter;

namespace platform {
class RunLoop;
}

/// Knows whether a plug-in applies what the window shows, and if not, why: so that the window can
/// say so. A plug-in is there while anything is connected to a socket or the plug-in's name is on
/// the session bus. Short absences, as at a start or a restart, are no problem. Main thread only.
class PluginHealth {
  public:
    enum class Problem {
        none,
        noSocket,   ///< nobody can connect
        absent,     ///< no plug-in has been there for 2 s
        starting,   ///< one has been asked for
        notStarted, ///< but none has come
        silent,     ///< one is on the bus, but has not connected for 10 s
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

    /// Serves the socket and begins to watch. Where serving fails, it is tried again every 5 s.
    void begin();

    /// To be called, as often as one likes, when a connection or the name on the bus has come or
    /// gone. Looked at in the next turn of the loop.
    void changed() { review_.start({}); }

    /// Does what helps against the problem, if anything does: starts the plug-in, or tries again to
    /// serve the socket.
    void help();

    Problem problem() const noexcept { return problem_; }

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
    std::optional<Presence> presence_; // nothing before the first look
    int extensions_ = 0;               // of patience, while systemd is about to start the service
    platform::Timer review_;
    platform::Timer patience_;
};
