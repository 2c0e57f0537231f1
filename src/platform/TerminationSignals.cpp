#include "platform/TerminationSignals.h"

#include "platform/FileDescriptor.h"
#include "platform/RunLoop.h"
#include "platform/RunLoopSource.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace platform {

namespace {

constexpr std::array<int, 3> terminationSignals{SIGTERM, SIGINT, SIGHUP};

std::atomic<int> pipeForHandlers{-1};

extern "C" void forwardSignal(int number) {
    const int error = errno;
    const auto byte = static_cast<unsigned char>(number);
    [[maybe_unused]] const ssize_t written = ::write(pipeForHandlers.load(), &byte, 1);
    errno = error;
}

} // namespace

struct TerminationSignals::State {
    FileDescriptor readEnd;
    FileDescriptor writeEnd;
    std::unique_ptr<RunLoopSource> source;
    std::array<struct sigaction, terminationSignals.size()> previous{};
    struct sigaction previousPipe {};
};

TerminationSignals::TerminationSignals(RunLoop& loop, std::function<void(int)> handler)
    : state_(std::make_unique<State>()) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe2");
    state_->readEnd.reset(ends[0]);
    state_->writeEnd.reset(ends[1]);
    state_->source = RunLoopSource::create(loop, ends[0], RunLoopSource::reading,
                                           [descriptor = ends[0], call = std::move(handler)] {
                                               unsigned char number = 0;
                                               if (::read(descriptor, &number, 1) == 1)
                                                   call(number);
                                           });
    if (state_->source == nullptr)
        throw std::system_error(errno, std::generic_category(), "epoll_ctl");

    pipeForHandlers.store(ends[1]);
    struct sigaction action {};
    action.sa_handler = &forwardSignal;
    action.sa_flags = SA_RESTART;
    for (std::size_t i = 0; i < terminationSignals.size(); ++i)
        ::sigaction(terminationSignals[i], &action, &state_->previous[i]);
    action.sa_handler = [](int) {}; // ignoring would be inherited by programs that we start
    ::sigaction(SIGPIPE, &action, &state_->previousPipe);
}

TerminationSignals::~TerminationSignals() {
    for (std::size_t i = 0; i < terminationSignals.size(); ++i)
        ::sigaction(terminationSignals[i], &state_->previous[i], nullptr);
    ::sigaction(SIGPIPE, &state_->previousPipe, nullptr);
    pipeForHandlers.store(-1);
}

} // namespace platform
