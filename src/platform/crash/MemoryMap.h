#pragma once

#include <cstdint>
#include <initializer_list>

namespace platform {

class CrashWriter;

/// Writes the lines of /proc/self/maps that a crash report needs, each behind "map ": what is
/// executable, and what holds one of the addresses. May be called in a signal handler.
void writeMemoryMap(CrashWriter& out, std::initializer_list<std::uint64_t> addresses) noexcept;

} // namespace platform
