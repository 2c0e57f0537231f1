#include "platform/crash/MemoryMap.h"

#include "platform/crash/CrashWriter.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>

namespace platform {

namespace {

/// Takes a hexadecimal number from the front.
std::uint64_t takeNumber(std::string_view& text) noexcept {
    std::uint64_t number = 0;
    while (!text.empty()) {
        const char digit = text.front();
        const bool isLetter = digit >= 'a' && digit <= 'f';
        if (!isLetter && (digit < '0' || digit > '9'))
            break;
        number =
            number * 16 + static_cast<std::uint64_t>(isLetter ? digit - 'a' + 10 : digit - '0');
        text.remove_prefix(1);
    }
    return number;
}

/// "55d0c0a00000-55d0c0a21000 r-xp 00002000 fe:01 1234   /usr/bin/program"
bool isWanted(std::string_view line, std::initializer_list<std::uint64_t> addresses) noexcept {
    constexpr std::size_t executable = 3; // of the text behind the numbers
    const std::uint64_t begin = takeNumber(line);
    if (line.empty())
        return false;
    line.remove_prefix(1);
    const std::uint64_t end = takeNumber(line);
    if (line.size() > executable && line[executable] == 'x')
        return true;
    return std::any_of(addresses.begin(), addresses.end(),
                       [&](std::uint64_t address) { return address >= begin && address < end; });
}

/// Longer lines, which are those of long paths, are cut.
class Lines {
  public:
    Lines(CrashWriter& out, std::initializer_list<std::uint64_t> addresses) noexcept
        : out_(out), addresses_(addresses) {}

    void add(std::string_view part) noexcept {
        for (const char character : part) {
            if (character == '\n')
                end();
            else if (size_ < line_.size())
                line_[size_++] = character;
        }
    }

  private:
    void end() noexcept {
        const std::string_view line(line_.data(), size_);
        if (isWanted(line, addresses_))
            out_.text("map ").oneLine(line).endLine();
        size_ = 0;
    }

    CrashWriter& out_;
    const std::initializer_list<std::uint64_t> addresses_;
    std::array<char, 640> line_{};
    std::size_t size_ = 0;
};

} // namespace

void writeMemoryMap(CrashWriter& out, std::initializer_list<std::uint64_t> addresses) noexcept {
    const int maps = ::open("/proc/self/maps", O_RDONLY | O_CLOEXEC);
    if (maps < 0)
        return;
    Lines lines(out, addresses);
    std::array<char, 4096> part; // NOLINT(cppcoreguidelines-pro-type-member-init)
    while (true) {
        const ssize_t size = ::read(maps, part.data(), part.size());
        if (size > 0)
            lines.add({part.data(), static_cast<std::size_t>(size)});
        else if (size == 0 || errno != EINTR)
            break;
    }
    ::close(maps);
}

} // namespace platform
