#include "support/Tone.h"

#include <cmath>
#include <cstdint>
#include <fstream>
#include <numbers>
#include <stdexcept>
#include <vector>

namespace support {

namespace {

constexpr std::uint32_t rate = 48000;
constexpr std::uint16_t channels = 2;
constexpr std::uint32_t seconds = 120;

template <typename Integer>
void append(std::string& bytes, Integer value) {
    for (std::size_t i = 0; i < sizeof value; ++i)
        bytes.push_back(static_cast<char>(value >> (8 * i) & 0xff));
}

std::string waveHeader(std::uint32_t dataBytes) {
    constexpr std::uint16_t frameBytes = channels * sizeof(std::int16_t);
    std::string header = "RIFF";
    append(header, std::uint32_t{36} + dataBytes);
    header += "WAVEfmt ";
    append(header, std::uint32_t{16});
    append(header, std::uint16_t{1}); // whole numbers, not compressed
    append(header, channels);
    append(header, rate);
    append(header, rate * frameBytes);
    append(header, frameBytes);
    append(header, std::uint16_t{16});
    header += "data";
    append(header, dataBytes);
    return header;
}

/// One second, which holds a whole number of periods and so can follow itself.
std::string oneSecond(unsigned frequency, double peak) {
    std::string frames;
    for (std::uint32_t i = 0; i < rate; ++i) {
        const double phase = 2 * std::numbers::pi * frequency * i / rate;
        const auto sample = static_cast<std::int16_t>(std::lround(32767 * peak * std::sin(phase)));
        for (unsigned channel = 0; channel < channels; ++channel)
            append(frames, static_cast<std::uint16_t>(sample));
    }
    return frames;
}

std::string writeWave(const std::filesystem::path& path, unsigned frequency, double peak) {
    const std::string second = oneSecond(frequency, peak);
    std::ofstream file(path, std::ios::binary);
    file << waveHeader(static_cast<std::uint32_t>(second.size()) * seconds);
    for (std::uint32_t i = 0; i < seconds; ++i)
        file << second;
    if (!file.flush())
        throw std::runtime_error("cannot write " + path.string());
    return path;
}

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

Tone::Tone(const std::string& name, unsigned frequency, double peak)
    : copy_(std::in_place, std::filesystem::canonical("/usr/bin/pw-cat"), name)
    , player_(
          {copy_->path(), "--playback", writeWave(folder_.path() / "tone.wav", frequency, peak)}) {}

Tone::Tone(Player player, unsigned frequency, double peak, const std::string& target,
           const std::string& role)
    : player_(commandLine(player, writeWave(folder_.path() / "tone.wav", frequency, peak), target,
                          role)) {}

} // namespace support
