#include "settings/VolumeChange.h"

#include "settings/ProgramSetting.h"

#include <charconv>

std::optional<VolumeChange> VolumeChange::parse(std::string_view text) {
    std::string_view digits = text;
    const char sign = digits.empty() ? '\0' : digits.front();
    const bool isStep = sign == '+' || sign == '-';
    if (isStep)
        digits.remove_prefix(1);
    if (digits.ends_with('%'))
        digits.remove_suffix(1);
    int number = -1;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    const bool isNumber = error == std::errc() && end == digits.data() + digits.size() &&
                          digits.front() != '-' && number <= ProgramSetting::fullVolume;
    if (!isNumber)
        return std::nullopt;
    return VolumeChange{sign == '-' ? -number : number, isStep};
}

int VolumeChange::appliedTo(int before) const {
    return isStep ? ProgramSetting::clamped(before + percent) : percent;
}
