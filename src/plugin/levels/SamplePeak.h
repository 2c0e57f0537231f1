#pragma once

#include <span>

/// The maximum absolute value of the samples, 0 for none; ignores NaN. Does not allocate or wait.
/// Any thread.
float samplePeak(std::span<const float> samples) noexcept;
