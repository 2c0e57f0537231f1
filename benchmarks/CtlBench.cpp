#include "Harness.h"
#include "VolumeProbe.h"

#include "comm/MVCommMessages.h"
#include "comm/MVCommSocketPath.h"
#include "platform/base/MonotonicClock.h"
#include "platform/loop/UnixSocket.h"
#include "support/ChildProcess.h"
#include "support/PrivateAudioSession.h"
#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"
#include "support/ScriptedPlugin.h"
#include "support/WaitUntil.h"

#include <algorithm>
#include <chrono>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <vector>

// How long a volume that is set from a terminal is on its way.
namespace {

using support::ChildProcess;
using Clock = platform::MonotonicClock;

constexpr std::uint32_t program = 1U << 30U; // no process has such a number
constexpr const char* programName = "player";

/// An audio session with a stream, and the application with a program that has checked in. One at a
/// time.
class Stage {
  public:
    Stage() : probe_(), application_({TONVALE_PROGRAM}) {
        const auto isThere = [this] {
            return static_cast<bool>(plugin_ = platform::connectUnixSocket(MVCommMainSocketPath()));
        };
        if (!support::waitUntil(isThere))
            throw std::runtime_error("no plug-in can connect: " + application_.output());
        const std::string bytes = support::ScriptedPlugin::checkinBytes(program, programName);
        if (::send(plugin_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL) < 0 ||
            !support::waitUntil([] {
                return support::runCommand({TONVALECTL, "get", programName}).status == 0;
            }))
            throw std::runtime_error("the program has no item");
        current_ = this;
    }
    ~Stage() { current_ = nullptr; }
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    static Stage& current() { return *current_; }

    bench::VolumeProbe& probe() { return probe_; }

    /// When the next command has come.
    Clock::time_point awaitCommand() {
        constexpr int patience = 20000; // ms
        pollfd ready{plugin_.get(), POLLIN, 0};
        MVCommConsoleMessage command{};
        if (::poll(&ready, 1, patience) != 1 ||
            ::recv(plugin_.get(), &command, sizeof command, 0) != ssize_t{sizeof command})
            throw std::runtime_error("no command comes");
        return Clock::now();
    }

  private:
    const support::PrivateFolder folder_;
    const support::ScopedVariable variables_[3] = {{"TONVALE_SOCKET_DIR", folder_.path()},
                                                   {"XDG_CONFIG_HOME", folder_.path()},
                                                   {"XDG_STATE_HOME", folder_.path()}};
    const support::PrivateAudioSession session_;
    bench::VolumeProbe probe_;
    ChildProcess application_;
    platform::FileDescriptor plugin_;

    static inline Stage* current_ = nullptr;
};

/// The median of the milliseconds from the start of a program, which is given a percent, to what
/// `effect` waits for.
template <typename Command, typename Effect>
double timeToEffect(const Command& command, const Effect& effect) {
    constexpr int runs = 20; // even: the next begin with another volume than the last
    std::vector<double> times;
    for (int i = 0; i < runs; ++i) {
        const std::vector<std::string> words = command(i % 2 == 0 ? 40 : 60);
        const auto start = Clock::now();
        ChildProcess process(words);
        times.push_back(std::chrono::duration<double, std::milli>(effect() - start).count());
        if (process.wait() != 0)
            throw std::runtime_error(words.front() + " fails: " + process.output());
    }
    std::ranges::sort(times);
    return times.at(times.size() / 2);
}

double ours() {
    return timeToEffect(
        [](int percent) {
            return std::vector<std::string>{TONVALECTL, "set", programName,
                                            std::to_string(percent)};
        },
        [] { return Stage::current().awaitCommand(); });
}

double peer() {
    bench::VolumeProbe& probe = Stage::current().probe();
    return timeToEffect(
        [&](int percent) {
            probe.expectChange();
            return std::vector<std::string>{"wpctl", "set-volume", std::to_string(probe.node()),
                                            std::to_string(percent) + "%"};
        },
        [&] { return probe.awaitChange(); });
}

[[maybe_unused]] const bool added[] = {
    bench::addFigure({.name = "ctl/set",
                      .metric = "from the start of tonvalectl to its command at the plug-in; the "
                                "peer's to the new volume in the node",
                      .unit = "ms",
                      .ours = &ours,
                      .peerName = "wpctl set-volume",
                      .peer = &peer,
                      .surroundings = [] { return std::make_shared<Stage>(); }}),
};

} // namespace
