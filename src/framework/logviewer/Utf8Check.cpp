#include "framework/logviewer/Utf8Check.h"

#include <cstring>

namespace QN::logviewer {

namespace {

constexpr std::uint8_t firstContinuation = 0x80;
constexpr std::uint8_t lastContinuation = 0xBF;

bool isAsciiWord(const char* bytes) {
    constexpr std::uint64_t highBits = 0x8080808080808080U;
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return (word & highBits) == 0;
}

/// How many bytes from the beginning on are known to be ASCII, looking at whole words.
std::size_t asciiBytes(std::string_view text) {
    constexpr std::size_t word = sizeof(std::uint64_t);
    std::size_t size = 0;
    for (; size + word <= text.size(); size += word) {
        if (!isAsciiWord(text.data() + size))
            return size;
    }
    // The last word overlaps the one before.
    const bool isAll = size > 0 && isAsciiWord(text.data() + text.size() - word);
    return isAll ? text.size() : size;
}

} // namespace

void Utf8Check::take(std::string_view part) noexcept {
    while (isValid_ && !part.empty()) {
        const std::size_t plain = missing_ == 0 ? asciiBytes(part) : 0;
        part.remove_prefix(plain);
        for (std::size_t left = sizeof(std::uint64_t); left > 0 && !part.empty(); --left) {
            takeByte(static_cast<std::uint8_t>(part.front()));
            part.remove_prefix(1);
        }
    }
}

void Utf8Check::takeByte(std::uint8_t byte) noexcept {
    if (missing_ == 0) {
        begin(byte);
        return;
    }
    isValid_ = isValid_ && byte >= least_ && byte <= most_;
    --missing_;
    least_ = firstContinuation;
    most_ = lastContinuation;
}

void Utf8Check::begin(std::uint8_t byte) noexcept {
    least_ = firstContinuation;
    most_ = lastContinuation;
    if (byte < 0x80) {
        return;
    }
    if (byte >= 0xC2 && byte <= 0xDF) {
        missing_ = 1;
    } else if (byte >= 0xE0 && byte <= 0xEF) {
        missing_ = 2;
        least_ = byte == 0xE0 ? 0xA0 : least_;
        most_ = byte == 0xED ? 0x9F : most_;
    } else if (byte >= 0xF0 && byte <= 0xF4) {
        missing_ = 3;
        least_ = byte == 0xF0 ? 0x90 : least_;
        most_ = byte == 0xF4 ? 0x8F : most_;
    } else {
        isValid_ = false;
    }
}

} // namespace QN::logviewer
