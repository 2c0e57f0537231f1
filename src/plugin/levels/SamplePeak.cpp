#include "plugin/levels/SamplePeak.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

float samplePeak(std::span<const float> samples) noexcept {
    // Several maxima side by side, which the processor finds in one go.
    constexpr std::size_t lanes = 8;
    std::array<float, lanes> peaks{};
    std::size_t i = 0;
    for (; i + lanes <= samples.size(); i += lanes) {
        for (std::size_t lane = 0; lane < lanes; ++lane) {
            const float sample = std::fabs(samples[i + lane]);
            peaks[lane] = sample > peaks[lane] ? sample : peaks[lane];
        }
    }
    float peak = *std::max_element(peaks.begin(), peaks.end());
    for (; i < samples.size(); ++i)
        peak = std::max(peak, std::fabs(samples[i]));
    return peak;
}
