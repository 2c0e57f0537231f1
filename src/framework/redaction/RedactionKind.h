#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

/// What is replaced in files. The order is that in which the kinds are reported.
enum class RedactionKind : std::uint8_t {
    homeFolder,
    userName,
    hostName,
    machineId,
    serialNumber,
    macAddress, ///< of Bluetooth devices too
    ipAddress,
    networkName,
    token,
    mediaName,
};

inline constexpr std::size_t redactionKinds = 10;

struct RedactionWords {
    std::string_view name;        ///< in reports
    std::string_view replacement; ///< in files; plain in XML and JSON
};

[[nodiscard]] constexpr RedactionWords wordsOf(RedactionKind kind) noexcept {
    constexpr std::array<RedactionWords, redactionKinds> words{{
        {"homeFolder", "[home]"},
        {"userName", "[user]"},
        {"hostName", "[host]"},
        {"machineId", "[machine-id]"},
        {"serialNumber", "[serial]"},
        {"macAddress", "[mac]"},
        {"ipAddress", "[ip]"},
        {"networkName", "[network]"},
        {"token", "[token]"},
        {"mediaName", "[media]"},
    }};
    return words[static_cast<std::size_t>(kind)];
}
