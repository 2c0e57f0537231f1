#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace QN::log {

/// Prefixes that the calling thread puts before each of its messages to a log: any number of words,
/// each followed by a blank. Logs are identified by their number, see qnlog_handle::number().
namespace prefixes {

[[nodiscard]] bool areThere(std::uint64_t log) noexcept;
void append(std::uint64_t log, std::string prefix);
void erase(std::uint64_t log) noexcept;

/// `text` with the prefixes before it.
std::string prefixed(std::uint64_t log, std::string_view text);

} // namespace prefixes

} // namespace QN::log
