#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace QN::logviewer {

/// Reads the whole numbers of a text the way that scanf(3) does, but from a text that comes in
/// parts and is not kept. In the form, '#' is a number, which blanks and a sign may precede, a
/// blank is any number of blanks, and everything else stands for itself: "#-#-# #:#". One thread at
/// a time.
class NumberScan {
  public:
    static constexpr std::size_t mostNumbers = 7;

    /// `form` must stay valid.
    explicit constexpr NumberScan(std::string_view form) noexcept : form_(form) {}

    /// Forgets the text.
    void reset() noexcept;

    /// Takes the next part of the text.
    void take(std::string_view part) noexcept;

    /// Whether the text so far cannot match any more, so that more of it need not be taken.
    [[nodiscard]] bool hasFailed() const noexcept { return phase_ == Phase::failed; }

    /// How many numbers the text so far has.
    [[nodiscard]] std::size_t count() const noexcept;

    /// A number that has been read, modulo 2^32 like %u. One beyond 64 bits counts as the greatest.
    [[nodiscard]] std::uint32_t number(std::size_t index) const noexcept;

  private:
    enum class Phase { form, number, sign, digits, failed, done };

    void takeByte(char byte) noexcept;
    void addDigit(char digit) noexcept;
    void advance() noexcept;

    std::string_view form_;
    std::size_t place_ = 0; // in the form
    Phase phase_ = Phase::form;
    std::size_t count_ = 0; // of complete numbers
    std::array<std::uint64_t, mostNumbers> numbers_{};
    std::array<bool, mostNumbers> negative_{};
};

} // namespace QN::logviewer
