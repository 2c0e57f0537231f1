// TonvaleRelauncher PROCESS START-TIME PROGRAM [ARGUMENT...]: becomes PROGRAM, with those
// arguments, once PROCESS is gone.

#include "platform/base/SystemLog.h"
#include "relauncher/ProcessWait.h"

#include <cerrno>
#include <charconv>
#include <cstring>
#include <exception>
#include <optional>
#include <string_view>
#include <unistd.h>

namespace {

constexpr int wrongUsage = 2;
constexpr int notStarted = 1;
constexpr int programIndex = 3;

template <typename Number>
std::optional<Number> numberIn(std::string_view text) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isWhole = error == std::errc() && end == text.data() + text.size() && number > 0;
    return isWhole ? std::optional(number) : std::nullopt;
}

} // namespace

int main(int argc, char** argv) {
    try {
        const auto process = argc > programIndex ? numberIn<pid_t>(argv[1]) : std::nullopt;
        const auto startTime = process ? numberIn<std::uint64_t>(argv[2]) : std::nullopt;
        if (!startTime)
            return wrongUsage;
        waitForEndOf(*process, *startTime);
        ::execv(argv[programIndex], argv + programIndex);
        platform::systemLog(platform::LogPriority::error, "%s can't be started: %s",
                            argv[programIndex], std::strerror(errno));
    } catch (const std::exception& exception) {
        platform::systemLog(platform::LogPriority::error, "Tonvale can't be started again: %s",
                            exception.what());
    }
    return notStarted;
}
