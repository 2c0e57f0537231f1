#pragma once

#include <QtGlobal>

/// Conversions between percents, fractions and levels. Values are truncated towards zero; NaN
/// becomes 0.
namespace VolumeConversion {

inline constexpr int full = 100; ///< percent

/// The percent of a slider's value, 0 to 100.
int percentOfFraction(double fraction);

/// The smallest slider value for a percent, which is clamped to 0 to 100.
float fractionForPercent(int percent);

/// A level from the wire, clamped to 0 to 1.
float clampedLevel(float level);

/// A clamped level in percent.
qint64 percentOfLevel(float clampedLevel);

} // namespace VolumeConversion
