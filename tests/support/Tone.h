#pragma once

#include "support/ChildProcess.h"
#include "support/NamedCopy.h"
#include "support/PrivateFolder.h"

#include <filesystem>
#include <optional>
#include <string>

namespace support {

/// Writes a wave file of a sine on both channels, two minutes at most, and returns its path. `peak`
/// is linear, 0 to 1. Throws std::runtime_error when it cannot be written.
std::filesystem::path writeTone(const std::filesystem::path& path, unsigned frequency, double peak,
                                double seconds = 120);

/// A program that plays a sine on both channels for as long as the object lives, two minutes at
/// most, through the audio server that the environment names.
class Tone {
  public:
    /// pwCat speaks to PipeWire itself, paplay through its PulseAudio service. They are different
    /// executables, hence different applications.
    enum class Player { pwCat, paplay };

    /// A copy of pw-cat under another name, as a different application.
    Tone(const std::string& name, unsigned frequency, double peak);

    /// `peak` is linear, 0 to 1. `target` is the node.name of a sink; empty: the default one.
    /// `role` is the media.role of the stream; empty: the player's own.
    Tone(Player player, unsigned frequency, double peak, const std::string& target = {},
         const std::string& role = {});

    pid_t pid() const noexcept { return player_.pid(); }
    ChildProcess& process() noexcept { return player_; }

  private:
    const PrivateFolder folder_;
    const std::optional<NamedCopy> copy_;
    ChildProcess player_;
};

} // namespace support
