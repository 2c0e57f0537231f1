#pragma once

#include <span>

/// The greatest of the samples whatever their signs, 0 for none; what is not a number is left out.
/// Neither allocates nor waits. Any thread.
float samplePeak(std::span<const float> samples) noexcept;
