#pragma once

#include "framework/logviewer/NumberScan.h"
#include "framework/logviewer/Utf8Check.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace QN::logviewer {

/// The hour that a date line of a log begins.
struct LogHour {
    std::uint32_t year = 0;
    std::uint32_t month = 0; ///< 1 to 12
    std::uint32_t day = 0;
    std::uint32_t hour = 0;
    std::uint32_t minute = 0;
    std::uint32_t second = 0;

    /// The time that the times of its messages are added to, in seconds. It is made from a
    /// broken-down time whose year and month fields hold the numbers of the line, so only the time
    /// of day, which is that of the file whatever the zone, and the order are meaningful.
    [[nodiscard]] std::int64_t base() const noexcept;

    bool operator==(const LogHour&) const = default;
};

/// What a line of a log is.
struct LogLine {
    enum class Kind : std::uint8_t {
        message, ///< a line of a message that has a time
        date,    ///< a date line
        further, ///< any other text: the message before goes on
        unknown, ///< begins like a message, but has no time: left out
        notUtf8, ///< left out
    };

    Kind kind = Kind::further;
    std::uint32_t level = 0;  ///< of a message
    std::uint32_t minute = 0; ///< of a message, like the next two
    std::uint32_t second = 0;
    std::uint32_t milliseconds = 0;
    std::size_t textStart = 0; ///< of a message: where its text begins; may be behind its end
    LogHour hour = {};         ///< of a date line
};

/// Tells what a line is. The line comes in parts, of which nothing is kept, so that a line of any
/// length takes the same memory. One thread at a time.
class LogLineScan {
  public:
    /// Takes the next part of the line, which holds no line feed.
    void take(std::string_view part) noexcept;

    /// Ends the line, and begins the next one.
    [[nodiscard]] LogLine finish() noexcept;

    /// How much of the line has been taken.
    [[nodiscard]] std::uint64_t size() const noexcept { return size_; }

    /// What a whole line is.
    [[nodiscard]] static LogLine lineOf(std::string_view line) noexcept;

  private:
    /// Of a message: minute, second and milliseconds.
    using Time = std::array<std::uint32_t, 3>;

    static std::optional<Time> usualTime(std::string_view line) noexcept;
    LogLine line() const noexcept;
    LogLine messageLine() const noexcept;

    static constexpr std::size_t headSize = 15;

    std::uint64_t size_ = 0;
    std::array<char, headSize> head_{};
    std::optional<Time> usualTime_; // in which case the next two are not used
    NumberScan time_{":#:#.#"};
    NumberScan date_{"#-#-# #:#:# #"};
    Utf8Check utf8_;
};

} // namespace QN::logviewer
