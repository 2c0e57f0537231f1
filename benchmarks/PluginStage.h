#pragma once

#include "platform/base/MonotonicClock.h"
#include "platform/loop/RunLoop.h"
#include "support/ChildProcess.h"
#include "support/GraphStream.h"
#include "support/ListeningApplication.h"
#include "support/NamedCopy.h"
#include "support/PrivateAudioSession.h"
#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"
#include "support/SystemLogRecorder.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

// What is around the plug-in while it is measured. All throw std::runtime_error when something that
// they wait for does not come.
namespace bench {

/// Serves the application's sockets meanwhile.
void rest(std::chrono::milliseconds duration);

void await(const std::function<bool()>& condition, const char* what,
           const support::ChildProcess& program);

double milliseconds(platform::MonotonicClock::duration duration);

/// Processor time that a process has had, all threads, those included that have ended.
platform::MonotonicClock::duration processorTime(pid_t pid);

/// Of an audio session's three services together.
platform::MonotonicClock::duration processorTime(support::PrivateAudioSession& session);

std::uint32_t ownPid();

/// An audio session, the application's side of the socket, and programs that play noise. One at a
/// time.
class PluginStage {
  public:
    explicit PluginStage(int programs);
    ~PluginStage() { current_ = nullptr; }
    PluginStage(const PluginStage&) = delete;
    PluginStage& operator=(const PluginStage&) = delete;

    static PluginStage& current() { return *current_; }

    support::ListeningApplication& application() { return application_; }
    std::size_t programs() const { return players_.size(); }

    /// Of all three services together.
    platform::MonotonicClock::duration timeOfServices();

    /// Whether levels of every program have come.
    bool hearsAll();

  private:
    const support::SystemLogRecorder log_; // a line for each connection disturbs the figures
    const support::PrivateFolder folder_;
    const support::ScopedVariable socket_{"TONVALE_SOCKET_DIR", folder_.path()};
    platform::RunLoop loop_;
    support::PrivateAudioSession session_;
    support::ListeningApplication application_;
    std::vector<std::unique_ptr<support::NamedCopy>> copies_; // each name is a program
    std::vector<std::unique_ptr<support::ChildProcess>> players_;

    static inline PluginStage* current_ = nullptr;
};

template <int programs>
std::shared_ptr<void> makePluginStage() {
    return std::make_shared<PluginStage>(programs);
}

/// A program that plays: this process.
class Player {
  public:
    static constexpr float sample = 0.5F; // again and again, so that each tells the gain

    Player();

    /// Plays, and waits until it does.
    platform::MonotonicClock::time_point start();
    void pause() { stream_->setActive(false); }

  private:
    void play(std::span<float> samples);

    std::atomic<platform::MonotonicClock::rep> startedAt_ = 0;
    const std::unique_ptr<support::GraphStream> stream_;
};

/// The plug-in, from the moment on that it has found this process.
class FoundPlugin {
  public:
    FoundPlugin();

    pid_t pid() const noexcept { return process_.pid(); }

  private:
    support::ChildProcess process_;
};

/// Has the player start and returns the milliseconds from the first cycle of sound to the first
/// level.
double untilLevel(Player& player);

} // namespace bench
