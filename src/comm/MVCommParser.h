#pragma once

#include "comm/MVCommMessages.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

/// Parses the bytes of one read into messages, without copying texts and without reading past the
/// end. Call next() until it returns something other than activity or checkin; discard the rest of
/// the read then. A message that was split over two reads is not reassembled: its first half is
/// tooShort or invalidLength, its second half usually unknown.
///
/// The read must outlive the parser. Any thread, one at a time.
class MVCommParser {
  public:
    enum class Result {
        end,           ///< nothing is left
        activity,      ///< activity() holds a message
        checkin,       ///< checkin() holds a message
        tooShort,      ///< remaining() is 1 to 3: not even an identifier
        invalidLength, ///< messageID() is known, but fewer bytes remain than it takes
        unknown,       ///< messageID() is not a known identifier
    };

    /// A check-in with its texts up to their NUL, or up to the end of the message if they have
    /// none: a name may continue into the path. (A message that follows would begin with a NUL
    /// anyway.)
    struct Checkin {
        std::uint32_t pid;
        std::string_view name;
        std::string_view path;
    };

    explicit MVCommParser(std::span<const std::byte> read) noexcept : rest_(read) {}

    [[nodiscard]] Result next() noexcept;

    /// Bytes of the read that next() has not consumed.
    [[nodiscard]] std::int32_t remaining() const noexcept {
        return static_cast<std::int32_t>(rest_.size());
    }

    /// Of the last message that next() found.
    [[nodiscard]] std::uint32_t messageID() const noexcept { return messageID_; }

    [[nodiscard]] const MVCommActivityMessage& activity() const noexcept { return activity_; }
    [[nodiscard]] const Checkin& checkin() const noexcept { return checkin_; }

  private:
    std::string_view textAt(std::size_t offset) const noexcept;

    std::span<const std::byte> rest_;
    std::uint32_t messageID_ = 0;
    MVCommActivityMessage activity_{};
    Checkin checkin_{};
};
