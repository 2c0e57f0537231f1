#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace QN::async {

/// Where the limit comes from: named values of the system, 4 bytes each, and the hard limit on the
/// number of processes, nothing when it cannot be read.
struct LimitSources {
    bool (*systemValue)(const char* name, void* buffer, std::size_t size) noexcept;
    std::optional<std::uint64_t> (*processLimit)() noexcept;
};

/// The most threads that the pool may have besides its manager's, by these sources: the value
/// "kern.wq_max_threads", or half of "kern.num_taskthreads", or half of the process limit; 128
/// where these say nothing, none or without limit.
std::uint32_t threadLimitFrom(const LimitSources& sources) noexcept;

/// That of this process, found on the first call. Any thread.
std::uint32_t thread_limit() noexcept;

/// The number of workers that the pool keeps and that background queues make do with: as many as
/// there are processors, at least 2.
std::uint32_t baseSize() noexcept;

} // namespace QN::async
