#pragma once

#include "comm/MVCommMessages.h"

#include <array>
#include <cstddef>
#include <optional>
#include <span>

/// Puts the application's commands together from what a connection delivers, however it is cut.
/// Keeps at most the beginning of one command between two deliveries. Any thread, one at a time.
class CommandReader {
  public:
    /// Takes the next whole command out of `bytes`, which shrinks to what is left. Call it until it
    /// answers nothing; all of `bytes` has been taken then.
    [[nodiscard]] std::optional<MVCommConsoleMessage>
    next(std::span<const std::byte>& bytes) noexcept;

    /// How many bytes of a command wait for the rest of it.
    std::size_t pending() const noexcept { return filled_; }

  private:
    std::array<std::byte, sizeof(MVCommConsoleMessage)> frame_;
    std::size_t filled_ = 0;
};
