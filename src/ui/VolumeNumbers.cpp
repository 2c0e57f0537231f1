#include "ui/VolumeNumbers.h"

#include <algorithm>
#include <cmath>

int VolumeNumbers::percentOfFraction(double fraction) {
    return fraction > 0 ? static_cast<int>(std::min(fraction, 1.0) * full) : 0;
}

float VolumeNumbers::fractionForPercent(int percent) {
    const int wanted = std::clamp(percent, 0, full);
    float fraction = static_cast<float>(wanted) / static_cast<float>(full);
    while (percentOfFraction(static_cast<double>(fraction)) < wanted)
        fraction = std::nextafter(fraction, 1.0F);
    for (float less = fraction; fraction > 0; fraction = less) {
        less = std::nextafter(fraction, 0.0F);
        if (percentOfFraction(static_cast<double>(less)) < wanted)
            break;
    }
    return fraction;
}

float VolumeNumbers::clampedLevel(float level) {
    return level > 0.0F ? std::min(level, 1.0F) : 0.0F;
}

qint64 VolumeNumbers::percentOfLevel(float clampedLevel) {
    return static_cast<qint64>(clampedLevel * static_cast<float>(full));
}
