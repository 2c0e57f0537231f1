#include "platform/base/SystemValue.h"

#include <atomic>

namespace platform {

namespace {
std::atomic<SystemValueSource> replacement{nullptr};
}

bool systemValue(const char* name, void* buffer, std::size_t size) noexcept {
    const SystemValueSource source = replacement.load(std::memory_order_acquire);
    return source && source(name, buffer, size);
}

SystemValueSource replaceSystemValueSource(SystemValueSource source) noexcept {
    return replacement.exchange(source, std::memory_order_acq_rel);
}

} // namespace platform
