#pragma once

#include "settings/ProgramSetting.h"

#include <cstdint>
#include <functional>
#include <string>

/// Reports to the application over the bus. Called on the main thread; they do nothing by default.
struct ApplicationReports {
    /// Another mixer has changed a program's volume or mute. May be above 100 percent.
    std::function<void(std::uint32_t pid, const ProgramSetting&)> changedElsewhere =
        [](std::uint32_t, const ProgramSetting&) {};

    /// None of the program's streams has a volume that can be set, with the reason as text for the
    /// user; if that is empty, one has.
    std::function<void(std::uint32_t pid, const std::string& reason)> notControllable =
        [](std::uint32_t, const std::string&) {};
};
