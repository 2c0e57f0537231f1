#pragma once

#include <cstddef>

namespace platform {

/// Numbers that some kernels publish under a dotted name ("kern.num_taskthreads"). Linux publishes
/// none of them, so they are always missing, unless a test installs a source.

/// Stores the value, `size` bytes in the machine's order, in `buffer`. False, with the buffer
/// untouched, if there is none of that name and size. Any thread.
[[nodiscard]] bool systemValue(const char* name, void* buffer, std::size_t size) noexcept;

/// Must be callable on any thread.
using SystemValueSource = bool (*)(const char* name, void* buffer, std::size_t size) noexcept;

/// Installs `source` (null: the kernel again) and returns the previous one. Any thread.
SystemValueSource replaceSystemValueSource(SystemValueSource source) noexcept;

} // namespace platform
