#include "model/VolumeConversion.h"

#include <algorithm>
#include <cmath>

int VolumeConversion::percentOfFraction(double fraction) {
    return fraction > 0 ? static_cast<int>(std::min(fraction, 1.0) * full) : 0;
}

float VolumeConversion::fractionForPercent(int percent) {
    const int wanted = std::clamp(percent, 0, full);
    const auto isEnough = [wanted](float fraction) {
        return percentOfFraction(static_cast<double>(fraction)) >= wanted;
    };
    float fraction = static_cast<float>(wanted) / static_cast<float>(full);
    while (!isEnough(fraction))
        fraction = std::nextafter(fraction, 1.0F);
    while (fraction > 0 && isEnough(std::nextafter(fraction, 0.0F)))
        fraction = std::nextafter(fraction, 0.0F);
    return fraction;
}

float VolumeConversion::clampedLevel(float level) {
    return level > 0.0F ? std::min(level, 1.0F) : 0.0F;
}

qint64 VolumeConversion::percentOfLevel(float clampedLevel) {
    return static_cast<qint64>(clampedLevel * static_cast<float>(full));
}
