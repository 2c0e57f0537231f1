#include "support/SystemLogRecorder.h"

#include <algorithm>

namespace support {

std::vector<SystemLogRecorder::Line> SystemLogRecorder::lines() const {
    const std::lock_guard lock(mutex_);
    return lines_;
}

std::size_t SystemLogRecorder::count(std::string_view text) const {
    const std::lock_guard lock(mutex_);
    const auto matches = std::ranges::count_if(
        lines_, [&](const Line& line) { return line.text.find(text) != std::string::npos; });
    return static_cast<std::size_t>(matches);
}

void SystemLogRecorder::clear() {
    const std::lock_guard lock(mutex_);
    lines_.clear();
}

void SystemLogRecorder::line(platform::LogPriority priority, std::string_view text) noexcept {
    const std::lock_guard lock(mutex_);
    lines_.push_back({priority, std::string(text)});
}

} // namespace support
