#include "plugin/connection/CommandReader.h"

#include <algorithm>
#include <cstring>

std::optional<MVCommConsoleMessage>
CommandReader::next(std::span<const std::byte>& bytes) noexcept {
    const std::size_t taken = std::min(frame_.size() - filled_, bytes.size());
    std::copy_n(bytes.begin(), taken, frame_.begin() + static_cast<std::ptrdiff_t>(filled_));
    bytes = bytes.subspan(taken);
    filled_ += taken;
    if (filled_ < frame_.size())
        return std::nullopt;
    filled_ = 0;
    MVCommConsoleMessage command{};
    std::memcpy(&command, frame_.data(), sizeof command);
    return command;
}
