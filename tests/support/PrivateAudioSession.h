#pragma once

#include "support/ChildProcess.h"
#include "support/PrivateBus.h"
#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace support {

/// An audio server of our own: session bus, PipeWire, WirePlumber and the PulseAudio service, in a
/// runtime folder that XDG_RUNTIME_DIR names while it lives. It touches no hardware; its default
/// output is a null sink, 48000 Hz stereo, that runs by its own clock. What programs play there is
/// heard with SinkRecorder. Every program starts at full volume, whatever one before it had, unless
/// the session manager keeps its memory.
///
/// One at a time; the thread that made it only. Constructor, start() and restart() return when the
/// service works and throw std::runtime_error, with the end of its output, when it does not.
class PrivateAudioSession {
  public:
    /// node.name of the null sink.
    static constexpr const char* sink = "tonvale-test";

    /// The names of the services, which come up in this order.
    static constexpr const char* server = "pipewire";
    static constexpr const char* sessionManager = "wireplumber";
    static constexpr const char* pulseService = "pipewire-pulse";

    /// Whether the session manager remembers the volume of a program and restores it to its next
    /// streams, as it does by default for everybody.
    enum class Memory { none, kept };

    explicit PrivateAudioSession(Memory memory = Memory::none);
    ~PrivateAudioSession();

    const std::filesystem::path& runtimeFolder() const noexcept { return runtime_.path(); }

    /// Ends one service with the signal and waits until it has ended. The session manager ends by
    /// itself soon after the server.
    void stop(std::string_view service, int signal = SIGTERM);

    /// Starts a service that is not running.
    void start(std::string_view service);

    /// Stops and starts a service; with the server go the two others, which depend on it.
    void restart(std::string_view service);

    /// 0 while the service is not running.
    pid_t processOf(std::string_view service);

  private:
    struct Service {
        const char* name;
        bool (*isReady)();
        std::unique_ptr<ChildProcess> process;
    };
    Service& find(std::string_view service);
    void start(Service& service);

    const PrivateFolder folder_;
    const PrivateFolder runtime_;
    const ScopedVariable runtimeVariable_;
    const PrivateBus bus_;
    std::vector<Service> services_;
};

} // namespace support
