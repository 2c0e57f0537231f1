#pragma once

#include <cstddef>
#include <string_view>

/// Each returns the length of the address that begins at `place`, 0 if there is none. Addresses
/// that say nothing (this machine, any machine, masks) are none. The caller ensures that no letter
/// or digit stands before `place`.

/// Six or more bytes in hexadecimal, all with ':', '-', '_' or "%3A" between them, as of network
/// cards and Bluetooth devices; also 12 digits in the name of a network card ("enx…").
[[nodiscard]] std::size_t macAddressAt(std::string_view text, std::size_t place) noexcept;

[[nodiscard]] std::size_t ipAddressAt(std::string_view text, std::size_t place) noexcept;
