#pragma once

#include "platform/base/MonotonicClock.h"
#include "plugin/identity/StreamProcess.h"
#include "plugin/server/PipeWireHandles.h"
#include "plugin/volume/StreamObstacle.h"
#include "plugin/volume/StreamVolume.h"
#include "plugin/volume/VolumeKeeper.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

class AudioServer;
class NodeWriter;

namespace platform {
class RunLoop;
class Timer;
} // namespace platform

/// One output stream of a program in the sound server: its claims, its state and its volume. The
/// run loop's thread only; destroy it before the server's connection.
class AudioStream {
  public:
    class Listener {
      public:
        virtual ~Listener() = default;

        /// The claims have arrived or changed.
        virtual void streamDescribed(AudioStream& stream) = 0;

        /// isRunning() changed.
        virtual void streamStateChanged(AudioStream& stream) = 0;

        /// The user has changed the volume or mute of the stream elsewhere, and then left it
        /// unchanged for a while.
        virtual void streamChangedElsewhere(AudioStream& stream, const WantedVolume& change) = 0;

        /// The stream played before we started and keeps its volume. May be called from within
        /// adopt().
        virtual void streamFound(AudioStream& stream, const WantedVolume& found) = 0;

        /// obstacle() may have changed.
        virtual void streamObstacleChanged(AudioStream& stream) = 0;
    };

    /// Whether the stream existed when we connected to the server.
    enum class Origin { existed, appeared };

    /// Watches the node `id` of the server, which must be connected. `writer` and `listener` must
    /// outlive the stream.
    AudioStream(platform::RunLoop& loop, const AudioServer& server, NodeWriter& writer,
                std::uint32_t id, Origin origin, Listener& listener);
    ~AudioStream();
    AudioStream(const AudioStream&) = delete;
    AudioStream& operator=(const AudioStream&) = delete;

    [[nodiscard]] std::uint32_t id() const noexcept { return id_; }

    /// Whether the node's data has arrived.
    [[nodiscard]] bool isDescribed() const noexcept { return described_; }

    /// Fills in the node's claims about its process.
    void describeTo(StreamEvidence& evidence) const;

    /// Whether the stream belongs to a chain of filters or a loop-back, not to a program.
    [[nodiscard]] bool isInternal() const noexcept { return internal_; }

    /// The node's media.role.
    [[nodiscard]] const std::string& role() const noexcept { return role_; }

    [[nodiscard]] bool isRunning() const noexcept { return running_; }

    [[nodiscard]] Origin origin() const noexcept { return origin_; }

    /// The volume reported by the server; nothing until the first report.
    [[nodiscard]] const std::optional<StreamProps>& props() const noexcept {
        return keeper_.props();
    }

    /// Why its volume cannot be set, as text for the user; empty if it can, or not yet known.
    [[nodiscard]] std::string_view obstacle() const noexcept { return obstacle_.reason(); }

    /// The wanted volume.
    [[nodiscard]] const WantedVolume& wanted() const noexcept { return keeper_.wanted(); }

    /// The program's own volume, on top of the wanted one.
    [[nodiscard]] const OwnVolume& ownVolume() const noexcept { return keeper_.ownVolume(); }

    /// Sets the kind of its program; initially a player.
    void setKind(StreamKind kind) noexcept { keeper_.setKind(kind); }

    /// Replaces the wanted volume with `all`, the volume of its program; for a stream that gets an
    /// owner. It is written as soon as the stream accepts it, and upheld as long as the stream is
    /// new. A stream that already played is not made louder.
    void adopt(const WantedVolume& all);

    /// Sets the wanted volume, mute, or both. A playing stream reaches it within half a second,
    /// without clicks.
    void want(const WantedVolume& change, WantReason reason = WantReason::command);

    /// Writes the pending steps of want() at once.
    void finish();

    /// Upholds the wanted volume as if the stream were new: the session manager may reset it now.
    void uphold();

    /// Does not uphold the volume any more, until the next adopt(). Pending changes are still
    /// applied.
    void release() noexcept { keeper_.release(); }

    /// The level of the program's sound, 0 to 1: 0 unless the stream runs. It is before the user's
    /// volume, but after the program's own. `measured` contains peaks after both.
    float level(std::span<const ChannelPeak> measured);

  private:
    void informed(const pw_node_info& info);
    void propsChanged(const spa_pod* param);
    void noteParameters(const pw_node_info& info);
    void formatTold(std::uint32_t index, const spa_pod* param);
    void noteGains(const StreamProps& props);
    void write(const VolumeWrite& write);

    static const pw_node_events nodeEvents;

    const std::uint32_t id_;
    const Origin origin_;
    NodeWriter& writer_;
    Listener& listener_;

    StreamClaims claims_;
    std::string role_;
    bool described_ = false;
    bool internal_ = false;
    bool linked_ = false;
    bool running_ = false;

    StreamObstacle obstacle_;
    const std::unique_ptr<platform::Timer> review_; // of the obstacle, when all data has arrived

    VolumeKeeper keeper_;
    const std::unique_ptr<platform::Timer> wake_; // for the keeper's due time

    float lastLevel_ = 0.0F; // before all gains
    platform::MonotonicClock::time_point gainSettled_;

    ProxyHandle<pw_node> node_; // only for events
    ListenerHook hook_;
};
