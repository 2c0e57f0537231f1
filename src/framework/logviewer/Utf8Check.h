#pragma once

#include <cstdint>
#include <string_view>

namespace QN::logviewer {

/// Whether a text that comes in parts is UTF-8. Overlong forms, surrogates and code points beyond
/// Unicode are not. One thread at a time.
class Utf8Check {
  public:
    void reset() noexcept { *this = {}; }

    /// Takes the next part of the text.
    void take(std::string_view part) noexcept;

    /// Whether the text ends here and is UTF-8.
    [[nodiscard]] bool isComplete() const noexcept { return isValid_ && missing_ == 0; }

  private:
    void takeByte(std::uint8_t byte) noexcept;
    void begin(std::uint8_t byte) noexcept;

    bool isValid_ = true;
    std::uint8_t missing_ = 0; // bytes of the current character
    std::uint8_t least_ = 0;   // what its next byte may be
    std::uint8_t most_ = 0;
};

} // namespace QN::logviewer
