#pragma once

#include <cstddef>
#include <string_view>

/// The length of what looks like a secret or the id of something, and begins at `place`: keys with
/// the prefixes that services give them, UUIDs, long words of random letters and digits. 0 if there
/// is nothing like that. Build ids, of which crash reports need every digit, numbers of hardware
/// and mangled names of functions are none. The caller ensures that a word begins at `place`.
[[nodiscard]] std::size_t tokenAt(std::string_view text, std::size_t place) noexcept;
