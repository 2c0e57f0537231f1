#pragma once

#include "platform/sound/SampleOutput.h"

#include <cstdint>
#include <filesystem>
#include <vector>

/// A recording, decoded as a whole and mixed to one channel.
struct Recording {
    std::uint32_t rate = 0; ///< samples in a second
    std::vector<float> samples;

    /// Empty, after a report, when the file is missing or no sound.
    static Recording read(const std::filesystem::path& file,
                          const platform::SampleOutput::Report& report);
};
