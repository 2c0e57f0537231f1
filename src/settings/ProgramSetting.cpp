#include "settings/ProgramSetting.h"

#include <algorithm>

int ProgramSetting::clamped(int percent) noexcept {
    return std::clamp(percent, 0, fullVolume);
}

double ProgramSetting::clamped(double percent) noexcept {
    return std::clamp<double>(percent, 0, fullVolume);
}
