#include "support/SinkRecorder.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>
#include <numbers>
#include <stdexcept>

namespace support {

namespace {

constexpr std::size_t frameBytes = 2 * sizeof(float);

Recording split(const std::string& bytes) {
    std::vector<float> samples(bytes.size() / sizeof(float));
    std::memcpy(samples.data(), bytes.data(), samples.size() * sizeof(float));
    Recording recording;
    for (std::size_t i = 0; i < samples.size(); ++i)
        recording.channels.at(i % 2).push_back(samples[i]);
    return recording;
}

} // namespace

double toneAmplitude(std::span<const float> samples, double frequency, unsigned rate) {
    // Goertzel's recurrence over samples weighted by a Hann window.
    const double size = static_cast<double>(samples.size());
    const double step = 2 * std::numbers::pi * frequency / rate;
    const double coefficient = 2 * std::cos(step);
    double last = 0;
    double beforeLast = 0;
    double weights = 0;
    double position = 0;
    for (const float sample : samples) {
        const double weight =
            0.5 - 0.5 * std::cos(2 * std::numbers::pi * (position++ + 0.5) / size);
        weights += weight;
        const double next = weight * sample + coefficient * last - beforeLast;
        beforeLast = last;
        last = next;
    }
    return weights > 0 ? 2 * std::abs(last - std::polar(beforeLast, step)) / weights : 0;
}

double Recording::peak() const {
    float greatest = 0;
    for (const auto& samples : channels) {
        for (const float sample : samples)
            greatest = std::max(greatest, std::abs(sample));
    }
    return greatest;
}

SinkRecorder::SinkRecorder(const std::string& sink)
    : recorder_({"parec", "--device=" + sink + ".monitor", "--raw", "--format=float32le",
                 "--rate=48000", "--channels=2", "--latency-msec=50",
                 // A recording is never to be moved to another source or to change its volume.
                 "--property=media.role=Production"},
                {.environment = {}, .keepErrors = false}) {
    record(std::chrono::milliseconds(1));
}

Recording SinkRecorder::record(std::chrono::milliseconds duration) {
    const std::size_t begin = (recorder_.outputSize() + frameBytes - 1) / frameBytes * frameBytes;
    const auto frames = static_cast<std::size_t>(duration.count()) * Recording::rate / 1000;
    const std::size_t bytes = frames * frameBytes;
    const auto decided = [&] {
        return recorder_.outputSize() >= begin + bytes || !recorder_.isRunning();
    };
    if (!waitUntil(decided, patience + duration) || recorder_.outputSize() < begin + bytes)
        throw std::runtime_error("no sound arrives from the sink");
    return split(recorder_.outputFrom(begin).substr(0, bytes));
}

} // namespace support
