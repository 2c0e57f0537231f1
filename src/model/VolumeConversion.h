#pragma once

#include <QtGlobal>

/// How percents, fractions and levels become each other. Whatever has to be cut off is cut towards
/// zero; what is no number is 0.
namespace VolumeConversion {

inline constexpr int full = 100; ///< percent

/// What a slider's value means, 0 to 100.
int percentOfFraction(double fraction);

/// The smallest slider's value that means so many percent, which are clamped to 0 to 100.
float fractionForPercent(int percent);

/// A level as it came from the wire, within 0 to 1.
float clampedLevel(float level);

/// A clamped level in percent.
qint64 percentOfLevel(float clampedLevel);

} // namespace VolumeConversion
