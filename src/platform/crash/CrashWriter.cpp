#include "platform/crash/CrashWriter.h"

#include <cerrno>
#include <unistd.h>

namespace platform {

void CrashWriter::put(char character) noexcept {
    if (size_ == kept_.size())
        flush();
    kept_[size_++] = character;
}

CrashWriter& CrashWriter::text(std::string_view text) noexcept {
    for (const char character : text)
        put(character);
    return *this;
}

CrashWriter& CrashWriter::oneLine(std::string_view text) noexcept {
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        put(byte < 0x20 || byte == 0x7F ? ' ' : character);
    }
    return *this;
}

CrashWriter& CrashWriter::decimal(std::int64_t number) noexcept {
    if (number < 0)
        put('-');
    std::uint64_t rest =
        number < 0 ? 0 - static_cast<std::uint64_t>(number) : static_cast<std::uint64_t>(number);
    std::array<char, 20> digits{};
    std::size_t count = 0;
    do {
        digits[count++] = static_cast<char>('0' + rest % 10);
        rest /= 10;
    } while (rest != 0);
    while (count != 0)
        put(digits[--count]);
    return *this;
}

CrashWriter& CrashWriter::hex(std::uint64_t number) noexcept {
    text("0x");
    unsigned shift = 60;
    while (shift != 0 && (number >> shift) == 0)
        shift -= 4;
    for (;; shift -= 4) {
        put("0123456789abcdef"[(number >> shift) & 0xF]);
        if (shift == 0)
            return *this;
    }
}

bool CrashWriter::flush() noexcept {
    std::size_t written = 0;
    while (isWhole_ && written < size_) {
        const ssize_t part = ::write(descriptor_, kept_.data() + written, size_ - written);
        if (part > 0)
            written += static_cast<std::size_t>(part);
        else if (part == 0 || errno != EINTR)
            isWhole_ = false;
    }
    size_ = 0;
    return isWhole_;
}

} // namespace platform
