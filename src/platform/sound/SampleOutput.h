#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace platform {

/// Plays pieces of one recording, as an ordinary stream of this program on the sound server whose
/// own volume stays at 1. What it needs of sound and decoding is loaded with it. Nothing here
/// waits: the recording is read, and the server spoken to, on a thread of its own. A missing file
/// or server is silence, and one line in the system log. The main thread only.
class SampleOutput {
  public:
    using Seconds = std::chrono::duration<double>;

    /// Takes a line for the system log. Any thread. The module with the output has no log of its
    /// own.
    using Report = std::function<void(const std::string& line)>;

    /// What it calls itself to the sound server (application.name).
    static constexpr const char* clientName = "Tonvale";

    /// Null, with a line in the system log, when the module with the output cannot be loaded.
    static std::unique_ptr<SampleOutput> load(const std::filesystem::path& recording);

    virtual ~SampleOutput() = default;
    SampleOutput(const SampleOutput&) = delete;
    SampleOutput& operator=(const SampleOutput&) = delete;

    /// Plays so much from `start` on, in place of what is being played. Samples are multiplied by
    /// `gain`, 0 to 1.
    virtual void play(Seconds start, Seconds length, float gain) = 0;

    /// Plays nothing more than the end of a piece that began late, a quarter of a second at most.
    virtual void stop() = 0;

  protected:
    SampleOutput() = default;
};

} // namespace platform
