#pragma once

#include "settings/ProgramSetting.h"

#include <cstdint>
#include <functional>
#include <string>

/// What the application is told beside its socket. Called on the main thread; nobody hears it
/// unless somebody sets them.
struct ApplicationReports {
    /// Another mixer has set a program's volume or mute. Above 100 percent as it is.
    std::function<void(std::uint32_t pid, const ProgramSetting&)> changedElsewhere =
        [](std::uint32_t, const ProgramSetting&) {};

    /// None of the program's streams has a volume that can be set, for this reason, which is for
    /// people; when it is empty, one has.
    std::function<void(std::uint32_t pid, const std::string& reason)> notControllable =
        [](std::uint32_t, const std::string&) {};
};
