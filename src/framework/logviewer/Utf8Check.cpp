#include "framework/logviewer/Utf8Check.h"

#include <cstring>

namespace QN::logviewer {

namespace {

constexpr std::uint8_t firstContinuation = 0x80;
constexpr std::uint8_t lastContinuation = 0xBF;

/// How many bytes from the beginning on are ASCII, rounded down to whole words.
std::size_t asciiWords(std::string_view text) {
    constexpr std::uint64_t highBits = 0x8080808080808080U;
    std::size_t size = 0;
    for (std::uint64_t word = 0; size + sizeof word <= text.size(); size += sizeof word) {
        std::memcpy(&word, text.data() + size, sizeof word);
        if ((word & highBits) != 0)
            break;
    }
    return size;
}

} // namespace

void Utf8Check::take(std::string_view part) noexcept {
    while (isValid_ && !part.empty()) {
        const std::size_t plain = missing_ == 0 ? asciiWords(part) : 0;
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
