#include "framework/async/ThreadLimit.h"

#include "platform/base/SystemValue.h"

#include <algorithm>
#include <atomic>
#include <limits>
#include <sys/resource.h>
#include <thread>

namespace QN::async {

namespace {

constexpr std::uint32_t limitByDefault = 128;

std::optional<std::uint64_t> hardProcessLimit() noexcept {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NPROC, &limit) != 0)
        return std::nullopt;
    // An unlimited value does not say how many threads the machine can handle.
    return limit.rlim_max == RLIM_INFINITY ? 0 : limit.rlim_max;
}

std::uint32_t statedLimit(const LimitSources& sources) noexcept {
    std::uint32_t value = 0;
    if (sources.systemValue("kern.wq_max_threads", &value, sizeof value))
        return value;
    if (sources.systemValue("kern.num_taskthreads", &value, sizeof value))
        return value >> 1;
    constexpr std::uint64_t most = std::numeric_limits<std::uint32_t>::max();
    return static_cast<std::uint32_t>(std::min(sources.processLimit().value_or(0) / 2, most));
}

} // namespace

std::uint32_t threadLimitFrom(const LimitSources& sources) noexcept {
    const std::uint32_t limit = statedLimit(sources);
    return limit == 0 ? limitByDefault : limit;
}

std::uint32_t thread_limit() noexcept {
    static std::atomic<std::uint32_t> cached{0};
    std::uint32_t limit = cached.load(std::memory_order_relaxed);
    if (limit == 0) {
        limit = threadLimitFrom({&platform::systemValue, &hardProcessLimit});
        cached.store(limit, std::memory_order_relaxed);
    }
    return limit;
}

std::uint32_t baseSize() noexcept {
    static const std::uint32_t hardwareConcurrency = std::thread::hardware_concurrency();
    return std::max(2U, hardwareConcurrency);
}

} // namespace QN::async
