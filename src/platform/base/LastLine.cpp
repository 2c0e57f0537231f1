#include "platform/base/LastLine.h"

#include <algorithm>
#include <array>
#include <atomic>

namespace platform {

namespace {

constexpr std::size_t longestLine = 400;
std::array<char, longestLine> line{};
std::atomic<std::size_t> lineLength{0};
std::atomic_flag isBeingKept;

} // namespace

void keepLastLine(std::string_view text) noexcept {
    if (isBeingKept.test_and_set(std::memory_order_acquire))
        return;
    const std::size_t length = text.copy(line.data(), line.size());
    lineLength.store(length, std::memory_order_relaxed);
    isBeingKept.clear(std::memory_order_release);
}

std::size_t copyLastLine(std::span<char> buffer) noexcept {
    const std::size_t length = std::min(lineLength.load(std::memory_order_relaxed), buffer.size());
    std::copy_n(line.begin(), length, buffer.begin());
    return length;
}

} // namespace platform
