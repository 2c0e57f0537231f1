#include "platform/loop/SignalEvents.h"

#include "platform/base/CallStack.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace platform {

namespace {

struct Watched {
    std::atomic<bool> hasCome{false};
    std::optional<struct sigaction> previous; // the owner's thread only
};

std::array<Watched, NSIG> watched;
std::atomic<int> pipeForHandlers{-1};

extern "C" void noteSignal(int number) {
    const int error = errno;
    watched[static_cast<std::size_t>(number)].hasCome = true;
    // A full pipe is readable already.
    [[maybe_unused]] const ssize_t written = ::write(pipeForHandlers.load(), "", 1);
    errno = error;
}

extern "C" void doNothing(int /*number*/) {}

void install(int signal, void (*handler)(int), struct sigaction* previous) noexcept {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    ::sigaction(signal, &action, previous);
}

} // namespace

SignalEvents::SignalEvents() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        throw TracedError<std::system_error>(errno, std::generic_category(), "pipe2");
    readEnd_.reset(ends[0]);
    writeEnd_.reset(ends[1]);
    pipeForHandlers = ends[1];
}

SignalEvents::~SignalEvents() {
    for (int signal = 1; signal < NSIG; ++signal) {
        auto& each = watched[static_cast<std::size_t>(signal)];
        if (each.previous)
            ::sigaction(signal, &*each.previous, nullptr);
        each.previous.reset();
        each.hasCome = false;
    }
    pipeForHandlers = -1;
}

bool SignalEvents::watch(int signal) noexcept {
    struct sigaction previous {};
    if (signal <= 0 || signal >= NSIG || ::sigaction(signal, nullptr, &previous) != 0 ||
        signal == SIGKILL || signal == SIGSTOP)
        return false;
    auto& entry = watched[static_cast<std::size_t>(signal)];
    if (entry.previous || (signal == SIGHUP && previous.sa_handler == SIG_IGN))
        return true;
    entry.previous = previous;
    install(signal, &noteSignal, nullptr);
    return true;
}

void SignalEvents::silence() noexcept {
    for (int signal = 1; signal < NSIG; ++signal) {
        auto& each = watched[static_cast<std::size_t>(signal)];
        if (each.previous)
            install(signal, &doNothing, nullptr);
        each.previous.reset();
    }
}

std::optional<int> SignalEvents::next() noexcept {
    // First emptied, then looked at: what comes in between makes it readable again.
    std::array<char, 64> bytes{};
    while (::read(readEnd_.get(), bytes.data(), bytes.size()) == ssize_t{bytes.size()}) {
    }
    for (std::size_t signal = 1; signal < watched.size(); ++signal) {
        if (watched[signal].hasCome.exchange(false)) {
            // There may be others: the descriptor stays readable until none is found.
            [[maybe_unused]] const ssize_t written = ::write(writeEnd_.get(), "", 1);
            return static_cast<int>(signal);
        }
    }
    return std::nullopt;
}

void unblockSignals() noexcept {
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

void ignoreWriteSignals() noexcept {
    for (const int signal : {SIGPIPE, SIGXFSZ})
        install(signal, &doNothing, nullptr); // ignoring would be inherited by what we start
}

} // namespace platform
