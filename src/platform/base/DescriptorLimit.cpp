#include "platform/base/DescriptorLimit.h"

#include "platform/base/SystemLog.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <sys/resource.h>

namespace platform {

namespace {

constexpr rlim_t most = 65536;
constexpr rlim_t mostReserved = 128;
rlim_t limitAtStart = 0; // 0: not raised

} // namespace

void raiseDescriptorLimit() noexcept {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return;
    const rlim_t wanted = std::min(limit.rlim_max, most);
    if (limit.rlim_cur >= wanted)
        return;
    const rlim_t found = limit.rlim_cur;
    limit.rlim_cur = wanted;
    if (::setrlimit(RLIMIT_NOFILE, &limit) == 0)
        limitAtStart = found;
    else
        systemLog(LogPriority::warning, "Couldn't raise the limit of descriptors: %s (%d)",
                  std::strerror(errno), errno);
}

void restoreDescriptorLimit() noexcept {
    rlimit limit{};
    if (limitAtStart == 0 || ::getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return;
    limit.rlim_cur = std::min(limitAtStart, limit.rlim_max);
    ::setrlimit(RLIMIT_NOFILE, &limit);
}

int firstReservedDescriptor() noexcept {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return std::numeric_limits<int>::max();
    const rlim_t first = limit.rlim_cur - std::min(mostReserved, limit.rlim_cur / 4);
    return static_cast<int>(std::min<rlim_t>(first, std::numeric_limits<int>::max()));
}

} // namespace platform
