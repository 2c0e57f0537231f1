#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace QN::async {

/// The sources of the limit: named system values, 4 bytes each, and the hard limit on the number of
/// processes, nothing if it cannot be read.
struct LimitSources {
    bool (*systemValue)(const char* name, void* buffer, std::size_t size) noexcept;
    std::optional<std::uint64_t> (*processLimit)() noexcept;
};

/// The maximum number of threads of the pool besides its manager's: the value
/// "kern.wq_max_threads", or half of "kern.num_taskthreads", or half of the process limit; 128 if
/// these are missing, zero or unlimited.
std::uint32_t threadLimitFrom(const LimitSources& sources) noexcept;

/// The limit of this process, determined on the first call. Any thread.
std::uint32_t thread_limit() noexcept;

/// The number of workers that the pool keeps, and the maximum for background queues: one per
/// processor, at least 2.
std::uint32_t baseSize() noexcept;

} // namespace QN::async
