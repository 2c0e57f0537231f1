#pragma once

#include <atomic>
#include <cstdint>

namespace QN::async {

/// Counters of the pool's work. Nothing depends on them; any thread may read them.
struct Statistics {
    std::atomic<std::uint64_t> passes{0};
    std::atomic<std::uint64_t> dispatchRequests{0};
    std::atomic<std::uint64_t> additions{0};   ///< queues registered
    std::atomic<std::uint64_t> completions{0}; ///< tasks run
    std::atomic<std::uint64_t> retiredWorkers{0};
    std::atomic<std::uint64_t> creationFailures{0}; ///< workers that could not be created
};

} // namespace QN::async
