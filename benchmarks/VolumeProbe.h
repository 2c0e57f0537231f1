#pragma once

#include "platform/base/MonotonicClock.h"

#include <atomic>
#include <cstdint>
#include <pipewire/stream.h>
#include <pipewire/thread-loop.h>

namespace bench {

/// A stream of this process that plays silence and notices when somebody sets its volume: in the
/// node itself, which lives here. The thread that made it only. Throws std::runtime_error when what
/// it waits for does not come.
class VolumeProbe {
  public:
    /// Returns when it plays.
    VolumeProbe();
    ~VolumeProbe();
    VolumeProbe(const VolumeProbe&) = delete;
    VolumeProbe& operator=(const VolumeProbe&) = delete;

    std::uint32_t node() const noexcept { return node_; }

    /// From now on only a change of the volume counts.
    void expectChange() { changedAt_ = 0; }
    platform::MonotonicClock::time_point awaitChange();

  private:
    static void stateChanged(void* self, pw_stream_state old, pw_stream_state state,
                             const char* error);
    static void controlChanged(void* self, std::uint32_t id, const pw_stream_control* control);
    static void process(void* self);

    pw_thread_loop* loop_ = nullptr;
    pw_stream* stream_ = nullptr;
    const pw_stream_events events_;
    float volume_ = -1; // on the loop's thread
    std::atomic<bool> plays_ = false;
    std::atomic<std::uint32_t> node_ = 0;
    std::atomic<platform::MonotonicClock::rep> changedAt_ = 0;
};

} // namespace bench
