#include "PluginStage.h"

#include "support/WaitUntil.h"

#include <algorithm>
#include <ctime>
#include <stdexcept>
#include <string>
#include <unistd.h>

namespace bench {

using support::ChildProcess;
using support::PrivateAudioSession;
using Clock = platform::MonotonicClock;

void rest(std::chrono::milliseconds duration) {
    [[maybe_unused]] const bool never = support::waitUntil([] { return false; }, duration);
}

void await(const std::function<bool()>& condition, const char* what, const ChildProcess& program) {
    if (!support::waitUntil(condition))
        throw std::runtime_error(std::string(what) + "; the program said: " + program.output());
}

double milliseconds(Clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

Clock::duration processorTime(pid_t pid) {
    clockid_t clock = 0;
    timespec time{};
    if (pid == 0 || ::clock_getcpuclockid(pid, &clock) != 0 || ::clock_gettime(clock, &time) != 0)
        throw std::runtime_error("a process has ended");
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

std::uint32_t ownPid() {
    return static_cast<std::uint32_t>(::getpid());
}

PluginStage::PluginStage(int programs) {
    for (int i = 0; i < programs; ++i) {
        const support::NamedCopy& program = *copies_.emplace_back(
            std::make_unique<support::NamedCopy>("/usr/bin/pacat", "player-" + std::to_string(i)));
        players_.push_back(std::make_unique<ChildProcess>(
            std::vector<std::string>{program.path(), "--playback", "--raw", "/dev/urandom"}));
    }
    current_ = this;
}

Clock::duration PluginStage::timeOfServices() {
    Clock::duration sum{};
    for (const char* const service :
         {PrivateAudioSession::server, PrivateAudioSession::sessionManager,
          PrivateAudioSession::pulseService})
        sum += processorTime(session_.processOf(service));
    return sum;
}

bool PluginStage::hearsAll() {
    return std::ranges::all_of(players_, [this](const auto& player) {
        return !application_.levelsOf(static_cast<std::uint32_t>(player->pid())).empty();
    });
}

Player::Player()
    : stream_(support::GraphStream::player([this](std::span<float> samples) { play(samples); })) {}

Clock::time_point Player::start() {
    startedAt_ = 0;
    stream_->setActive(true);
    if (!support::waitUntil([this] { return startedAt_ != 0; }))
        throw std::runtime_error("the sound server does not play");
    return Clock::time_point(Clock::duration(startedAt_));
}

void Player::play(std::span<float> samples) {
    std::ranges::fill(samples, sample);
    if (startedAt_ == 0)
        startedAt_ = Clock::now().time_since_epoch().count();
}

FoundPlugin::FoundPlugin() : process_({TONVALE_PLUGIN}) {
    const auto isOurs = [](const auto& program) { return program.pid == ownPid(); };
    await(
        [&] {
            return std::ranges::any_of(PluginStage::current().application().programs(), isOurs);
        },
        "the plug-in does not find the player", process_);
}

double untilLevel(Player& player) {
    auto& application = PluginStage::current().application();
    application.forgetLevels();
    const auto start = player.start();
    if (!support::waitUntil([&] { return !application.levelsOf(ownPid()).empty(); }))
        throw std::runtime_error("no level comes");
    return milliseconds(application.levelsOf(ownPid()).front().arrived - start);
}

} // namespace bench
