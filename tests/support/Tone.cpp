#include "support/Tone.h"

#include <stdexcept>
#include <vector>

namespace support {

namespace {

std::vector<std::string> commandLine(Tone::Player player, const std::string& file,
                                     const std::string& target, const std::string& role) {
    const bool pulse = player == Tone::Player::paplay;
    std::vector<std::string> arguments{pulse ? "paplay" : "pw-cat"};
    if (!pulse)
        arguments.emplace_back("--playback");
    if (!target.empty())
        arguments.push_back((pulse ? "--device=" : "--target=") + target);
    if (!role.empty())
        arguments.push_back((pulse ? "--property=media.role=" : "--media-role=") + role);
    arguments.push_back(file);
    return arguments;
}

} // namespace

std::filesystem::path writeTone(const std::filesystem::path& path, unsigned frequency, double peak,
                                double seconds) {
    // One second holds a whole number of periods and so can follow itself.
    const char* const script = R"(exec sox -D -n -r 48000 -c 2 -b 16 "$1" \
        synth 1 sine "$2" vol "$3" repeat 119 trim 0 "$4")";
    const auto result = runCommand({"sh", "-c", script, "sh", path, std::to_string(frequency),
                                    std::to_string(peak), std::to_string(seconds)});
    if (result.status != 0)
        throw std::runtime_error("cannot write " + path.string() + ": " + result.output);
    return path;
}

Tone::Tone(const std::string& name, unsigned frequency, double peak)
    : copy_(std::in_place, std::filesystem::canonical("/usr/bin/pw-cat"), name)
    , player_(
          {copy_->path(), "--playback", writeTone(folder_.path() / "tone.wav", frequency, peak)}) {}

Tone::Tone(Player player, unsigned frequency, double peak, const std::string& target,
           const std::string& role)
    : player_(commandLine(player, writeTone(folder_.path() / "tone.wav", frequency, peak), target,
                          role)) {}

} // namespace support
