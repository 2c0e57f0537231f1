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

/// Tells the application how loud each program is: 21 times a second while it plays, once that it
/// has ended. Has a meter for each stream that runs and whose program the application listens to;
/// without one there is neither a timer nor anything of ours in the sound server.
///
/// A level is that before the volume which a person wants, though it is measured behind it: the
/// server has no place to measure before, since monitors exist for what comes into a node and a
/// program's stream has nothing but outputs. So the peak is divided by the gain, and a stream whose
/// gain is zero has a fixed level as long as the server runs it. What a program takes off by itself
/// is left in: a page that fades out is shown to do so. The run loop's thread only.
class LevelReporter {
  public:
    /// `graph` and `programs` are those of the server that attach() is told of.
    LevelReporter(platform::RunLoop& loop, const AudioGraph& graph, const ProgramTable& programs);
    ~LevelReporter();
    LevelReporter(const LevelReporter&) = delete;
    LevelReporter& operator=(const LevelReporter&) = delete;

    /// The server's connection from now on, until detach(), which must come before it goes.
    void attach(pw_core& core);
    void detach();

    /// To be called after any change of the graph, of a stream's state or of a connection. What
    /// follows from it is done with the loop's next turn.
    void review();

    /// Makes all meters anew, for when the server or the machine has been away.
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
