#pragma once

#include "plugin/identity/ProgramProcess.h"
#include "plugin/volume/StreamVolume.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// A snapshot of the plug-in's state, for users who examine a problem. Plain values, any thread.

struct StreamStatus {
    std::uint32_t id = 0; ///< the node in the sound server
    bool running = false;
    WantedVolume wanted;
    std::optional<StreamProps> actual; ///< nothing until the server has reported it
    OwnVolume own = {};                ///< the volume that the program has set itself
};

struct ProgramStatus {
    ProgramProcess process;
    WantedVolume wanted;     ///< what its next stream will get
    WantedVolume remembered; ///< what the next program of its name will get, unless it is ignored
    bool connected = false;
    std::vector<StreamStatus> streams;
    bool ignored = false; ///< it is ignored
    std::string obstacle; ///< why no volume of it can be set; empty if one can
};

struct PluginStatus {
    bool serverConnected = false;
    std::vector<ProgramStatus> programs;
    std::string preferences = {};    ///< the file that they come from, empty for none
    std::string ownPreferences = {}; ///< the file that is read
    std::string crashFolder = {};    ///< where reports of crashes are left, empty for nowhere
};

/// The text of `TonvalePlugin --status`, lines that each end with a line feed: one for the sound
/// server, one for the application, one for the preferences, one for the crash reports, then one
/// for each program with its streams indented below. Not meant to be parsed. Names and paths cannot
/// break out of their line.
std::string describe(const PluginStatus& status);
