#pragma once

#include "comm/MVCommMessages.h"

#include <array>
#include <cstddef>
#include <optional>
#include <span>

/// Reassembles the application's commands from a byte stream. Buffers at most an incomplete command
/// between two deliveries. Any thread, one at a time.
class CommandReader {
  public:
    /// Takes the next complete command out of `bytes`, which shrinks to the rest. Call it until it
    /// returns nothing; then all of `bytes` has been consumed.
    [[nodiscard]] std::optional<MVCommConsoleMessage>
    next(std::span<const std::byte>& bytes) noexcept;

    /// The number of buffered bytes of an incomplete command.
    [[nodiscard]] std::size_t pending() const noexcept { return filled_; }

  private:
    std::array<std::byte, sizeof(MVCommConsoleMessage)> frame_;
    std::size_t filled_ = 0;
};
