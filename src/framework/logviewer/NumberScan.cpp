#include "framework/logviewer/NumberScan.h"

#include <limits>

namespace QN::logviewer {

namespace {

constexpr std::uint64_t greatest = std::numeric_limits<std::uint64_t>::max();

constexpr bool isBlank(char byte) {
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

constexpr bool isDigit(char byte) {
    return byte >= '0' && byte <= '9';
}

} // namespace

void NumberScan::reset() noexcept {
    place_ = 0;
    count_ = 0;
    phase_ = Phase::form;
}

std::size_t NumberScan::count() const noexcept {
    return count_ + (phase_ == Phase::digits ? 1 : 0);
}

std::uint32_t NumberScan::number(std::size_t index) const noexcept {
    const std::uint64_t value = numbers_[index];
    return static_cast<std::uint32_t>(negative_[index] && value != greatest ? 0 - value : value);
}

void NumberScan::take(std::string_view part) noexcept {
    for (const char byte : part) {
        if (phase_ == Phase::failed || phase_ == Phase::done)
            return;
        takeByte(byte);
    }
}

void NumberScan::addDigit(char digit) noexcept {
    constexpr std::uint64_t base = 10;
    const auto value = static_cast<std::uint64_t>(digit - '0');
    std::uint64_t& number = numbers_[count_];
    if (number > (greatest - value) / base)
        number = greatest;
    else
        number = number * base + value;
    phase_ = Phase::digits;
}

/// The form's next element is a number, or a character that stands for itself.
void NumberScan::advance() noexcept {
    while (place_ < form_.size() && form_[place_] == ' ')
        ++place_;
    if (place_ == form_.size()) {
        phase_ = Phase::done;
    } else if (form_[place_] == '#') {
        phase_ = Phase::number;
        numbers_[count_] = 0;
        negative_[count_] = false;
    } else {
        phase_ = Phase::form;
    }
}

void NumberScan::takeByte(char byte) noexcept {
    if (phase_ == Phase::digits && !isDigit(byte)) {
        ++count_;
        ++place_;
        advance();
    } else if (phase_ == Phase::form && place_ == 0) {
        advance();
    }
    switch (phase_) {
    case Phase::form:
        if (byte != form_[place_]) {
            phase_ = Phase::failed;
            return;
        }
        ++place_;
        advance();
        return;
    case Phase::number:
        if (isBlank(byte))
            return;
        if (byte == '-' || byte == '+') {
            negative_[count_] = byte == '-';
            phase_ = Phase::sign;
            return;
        }
        [[fallthrough]];
    case Phase::sign:
        if (!isDigit(byte)) {
            phase_ = Phase::failed;
            return;
        }
        [[fallthrough]];
    case Phase::digits:
        addDigit(byte);
        return;
    case Phase::failed:
    case Phase::done:
        return;
    }
}

} // namespace QN::logviewer
