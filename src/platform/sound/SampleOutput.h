#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace platform {

/// Plays pieces of one recording, as an ordinary stream of this program on the sound server whose
/// own volume stays at 1. The sound and decoding libraries are loaded with it. No call blocks: its
/// own thread reads the recording and talks to the server. Without the file or a server there is
/// silence, and one line in the system log. Main thread only.
class SampleOutput {
  public:
    using Seconds = std::chrono::duration<double>;

    /// Writes a line to the system log, for the module, which has no log. Any thread.
    using Report = std::function<void(const std::string& line)>;

    /// The client's name at the sound server (application.name).
    static constexpr const char* clientName = "Tonvale";

    /// Null, with a line in the system log, if the output module cannot be loaded.
    [[nodiscard]] static std::unique_ptr<SampleOutput> load(const std::filesystem::path& recording);

    virtual ~SampleOutput() = default;
    SampleOutput(const SampleOutput&) = delete;
    SampleOutput& operator=(const SampleOutput&) = delete;

    /// Plays a piece of this length from `start` on, replacing the current one. Samples are
    /// multiplied by `gain`, 0 to 1.
    virtual void play(Seconds start, Seconds length, float gain) = 0;

    /// Stops, after at most a quarter of a second, in which the end of a piece that began late is
    /// played.
    virtual void stop() = 0;

  protected:
    SampleOutput() = default;
};

} // namespace platform
