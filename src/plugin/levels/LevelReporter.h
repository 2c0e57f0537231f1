#pragma once

#include "plugin/levels/LevelMeter.h"

#include <memory>
#include <set>

class Program;
class ProgramTable;

namespace platform {
class RunLoop;
class Timer;
} // namespace platform

/// Reports the level of each program to the application: 21 times a second while it plays, and once
/// when it has stopped. Has a meter for each running stream whose program is connected; without one
/// there is neither a timer nor any of our objects in the sound server.
///
/// The level is that before the user's volume, although it is measured after it: the server cannot
/// measure before, since monitors exist for a node's inputs only, and a program's stream only has
/// outputs. So the peak is divided by the gain, and a stream with gain zero has a fixed level as
/// long as the server runs it. The program's own volume is not divided out: a page that fades out
/// shows a falling level. The run loop's thread only.
class LevelReporter {
  public:
    /// `graph` and `programs` are those of the server that attach() is told of.
    LevelReporter(platform::RunLoop& loop, const AudioGraph& graph, const ProgramTable& programs);
    ~LevelReporter();
    LevelReporter(const LevelReporter&) = delete;
    LevelReporter& operator=(const LevelReporter&) = delete;

    /// Uses this connection until detach(), which must be called before the connection is
    /// destroyed.
    void attach(pw_core& core);
    void detach();

    /// Call this after any change of the graph, of a stream's state or of a connection. The meters
    /// are updated with the loop's next turn.
    void review();

    /// Recreates all meters, after an interruption of the server or the machine.
    void rebuild();

  private:
    std::set<std::uint32_t> measuredStreams() const;
    void plan();
    void report();
    float levelOf(const Program& program) const;
    bool isAnythingToReport() const;
    void scheduleReport();

    const AudioGraph& graph_;
    const ProgramTable& programs_;
    const std::unique_ptr<platform::Timer> planTimer_;
    const std::unique_ptr<platform::Timer> reportTimer_;
    platform::MonotonicClock::time_point nextReport_;
    std::unique_ptr<LevelMeter> meter_; // while there is a server
};
