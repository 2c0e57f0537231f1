#include "Desktop.h"

#include "PluginStage.h"

#include "comm/MVCommSocketPath.h"
#include "support/TestEnvironment.h"
#include "support/WaitUntil.h"

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

namespace bench {

namespace {

namespace fs = std::filesystem;
using support::ChildProcess;

std::size_t playing() {
    const auto answer = support::runCommand({"pactl", "list", "short", "sink-inputs"});
    return static_cast<std::size_t>(std::ranges::count(answer.output, '\n'));
}

} // namespace

Home::Home() {
    environment_.emplace_back("HOME", folder_.path());
    for (const auto& [variable, name] : {std::pair{"XDG_CONFIG_HOME", "config"},
                                         {"XDG_DATA_HOME", "data"},
                                         {"XDG_STATE_HOME", "state"},
                                         {"XDG_CACHE_HOME", "cache"},
                                         {"TONVALE_SOCKET_DIR", "sockets"},
                                         {"TONVALE_LOCAL_LIBRARY", "library"}}) {
        const fs::path path = folder_.path() / name;
        fs::create_directory(path);
        fs::permissions(path, fs::perms::owner_all);
        environment_.emplace_back(variable, path);
    }
    support::linkInstalledPlugin(folder_.path() / "library");
}

fs::path Home::socket() const {
    return folder_.path() / "sockets" / kMVCommSocketName;
}

Desktop::Desktop(const std::string& size, const std::vector<std::vector<std::string>>& players)
    : display_(size) {
    for (std::vector<std::string> player : players) {
        const std::string name = "player-" + std::to_string(copies_.size());
        copies_.push_back(std::make_unique<support::NamedCopy>(player.front(), name));
        player.front() = copies_.back()->path();
        players_.push_back(std::make_unique<ChildProcess>(player));
    }
    if (!support::waitUntil([this] { return playing() == players_.size(); }))
        throw std::runtime_error("the programs do not play");
    current_ = this;
}

platform::MonotonicClock::duration Desktop::timeOfServices() {
    return processorTime(display_.pid()) + processorTime(audio_);
}

} // namespace bench
