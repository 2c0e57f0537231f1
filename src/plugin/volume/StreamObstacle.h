#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

/// Determines why the volume of a stream cannot be set, from the server's reports. Plain data, any
/// thread.
class StreamObstacle {
  public:
    /// Whether the stream has properties that can be read, and so a volume.
    void propsListed(bool readable) noexcept { readable_ = readable; }

    /// One of the formats that the stream offers, the first of which has the index 0.
    void formatTold(std::uint32_t index, bool isRaw) noexcept;

    /// Whether the program that plays has locked the volume.
    void lockTold(bool locked) noexcept { locked_ = locked; }

    /// English text, which the application translates; empty if there is none, or it is not known
    /// yet.
    [[nodiscard]] std::string_view reason() const noexcept;

  private:
    std::optional<bool> readable_;
    std::optional<bool> raw_; // whether any format consists of samples
    bool locked_ = false;
};
