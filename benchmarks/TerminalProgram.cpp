#include "TerminalProgram.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace bench {

namespace {

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

} // namespace

TerminalProgram::TerminalProgram(
    const std::vector<std::string>& arguments,
    const std::vector<std::pair<std::string, std::string>>& environment) {
    std::vector<std::string> words = arguments;
    std::vector<std::string> variables;
    for (const auto& [name, value] : environment)
        variables.push_back(name + '=' + value);
    const std::vector<char*> argv = pointersTo(words);
    const std::vector<char*> envp = pointersTo(variables);
    const winsize size{.ws_row = 50, .ws_col = 200, .ws_xpixel = 0, .ws_ypixel = 0};
    int terminal = -1;
    start_ = std::chrono::steady_clock::now();
    pid_ = ::forkpty(&terminal, nullptr, nullptr, &size);
    if (pid_ == 0) {
        ::execve(argv[0], argv.data(), envp.data());
        ::_exit(127);
    }
    if (pid_ < 0)
        throw std::system_error(errno, std::generic_category(), "forkpty");
    terminal_.reset(terminal);
}

TerminalProgram::~TerminalProgram() {
    ::kill(pid_, SIGKILL);
    ::waitpid(pid_, nullptr, 0);
}

std::optional<std::chrono::steady_clock::duration>
TerminalProgram::timeUntilWritten(const std::string& word,
                                  std::chrono::steady_clock::duration bound) {
    using Clock = std::chrono::steady_clock;
    std::array<char, 65536> buffer{};
    for (const auto end = Clock::now() + bound; Clock::now() < end;) {
        constexpr int patience = 100; // ms
        pollfd ready{terminal_.get(), POLLIN, 0};
        if (::poll(&ready, 1, patience) <= 0)
            continue;
        const ssize_t got = ::read(terminal_.get(), buffer.data(), buffer.size());
        if (got <= 0)
            return std::nullopt;
        written_.append(buffer.data(), static_cast<std::size_t>(got));
        if (written_.find(word) != std::string::npos)
            return Clock::now() - start_;
    }
    return std::nullopt;
}

} // namespace bench
