#pragma once

#include "support/ChildProcess.h"
#include "support/PrivateAudioSession.h"

#include <array>
#include <chrono>
#include <span>
#include <string>
#include <vector>

namespace support {

/// The linear peak of the sine of `frequency` that `samples` hold: a sine of peak p alone answers p
/// within 1 % when the samples span at least ten of its periods. Tones that lie at least
/// 4 / duration apart do not disturb each other.
double toneAmplitude(std::span<const float> samples, double frequency, unsigned rate);

/// A piece of sound at 48000 Hz, full scale 1.
struct Recording {
    static constexpr unsigned rate = 48000;

    std::array<std::vector<float>, 2> channels; ///< left, right

    double amplitude(double frequency, std::size_t channel = 0) const {
        return toneAmplitude(channels.at(channel), frequency, rate);
    }

    /// The greatest sample of both channels, whatever its sign.
    double peak() const;
};

/// Listens to what a sink plays, before the sink's own volume, from construction on. It is a client
/// of the PulseAudio service and does not survive its restart.
class SinkRecorder {
  public:
    /// Returns when sound, if only silence, arrives; throws when none does.
    explicit SinkRecorder(const std::string& sink = PrivateAudioSession::sink);

    /// The next `duration` of sound, as it arrives; serves events meanwhile. What a program plays
    /// now arrives a few tenths of a second later, so a test waits for a condition on recordings.
    /// Throws when the sound ends.
    Recording record(std::chrono::milliseconds duration);

  private:
    ChildProcess recorder_;
};

} // namespace support
