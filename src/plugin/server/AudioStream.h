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

/// One output stream of a program in the sound server: what it claims about itself, whether it
/// runs, its volume. The run loop's thread only; must go before the server's connection does.
class AudioStream {
  public:
    class Listener {
      public:
        virtual ~Listener() = default;

        /// The claims have arrived or are others now.
        virtual void streamDescribed(AudioStream& stream) = 0;

        /// isRunning() changed.
        virtual void streamStateChanged(AudioStream& stream) = 0;

        /// A person changed the volume or the mute of the stream elsewhere, and has let it rest.
        virtual void streamChangedElsewhere(AudioStream& stream, const WantedVolume& change) = 0;

        /// The stream was heard before we came and keeps what it had. May be called from within
        /// adopt().
        virtual void streamFound(AudioStream& stream, const WantedVolume& found) = 0;

        /// obstacle() may be another.
        virtual void streamObstacleChanged(AudioStream& stream) = 0;
    };

    /// Whether the server had the stream when we connected to it.
    enum class Origin { existed, appeared };

    /// Watches the node `id` of the server, which must be connected. `writer` and `listener` must
    /// outlive the stream.
    AudioStream(platform::RunLoop& loop, const AudioServer& server, NodeWriter& writer,
                std::uint32_t id, Origin origin, Listener& listener);
    ~AudioStream();
    AudioStream(const AudioStream&) = delete;
    AudioStream& operator=(const AudioStream&) = delete;

    std::uint32_t id() const noexcept { return id_; }

    /// Whether the node has told what it is.
    bool isDescribed() const noexcept { return described_; }

    /// Fills in what the node claims about its process.
    void describeTo(StreamEvidence& evidence) const;

    /// Whether the stream belongs to a chain of filters or a loop-back, not to a program.
    bool isInternal() const noexcept { return internal_; }

    /// The node's media.role.
    const std::string& role() const noexcept { return role_; }

    bool isRunning() const noexcept { return running_; }

    Origin origin() const noexcept { return origin_; }

    /// What the server told of its volume; nothing until it has.
    const std::optional<StreamProps>& props() const noexcept { return keeper_.props(); }

    /// Why its volume cannot be set, for people; empty when it can, or nobody knows yet.
    std::string_view obstacle() const noexcept { return obstacle_.reason(); }

    /// What was asked for.
    const WantedVolume& wanted() const noexcept { return keeper_.wanted(); }

    /// What its program has set by itself, on top of what was asked for.
    const OwnVolume& ownVolume() const noexcept { return keeper_.ownVolume(); }

    /// What it belongs to; a player until that is told.
    void setKind(StreamKind kind) noexcept { keeper_.setKind(kind); }

    /// Forgets what was asked for and takes `all`, what its program remembers, instead; for a
    /// stream that gets an owner. It is written as soon as the stream can take it, and upheld for
    /// as long as the stream is new. A stream that existed and was heard is not made louder.
    void adopt(const WantedVolume& all);

    /// Asks for a volume, a mute, or both. A stream that is heard gets there within half a second,
    /// without clicks.
    void want(const WantedVolume& change, WantReason reason = WantReason::command);

    /// Writes at once what want() is still about to write.
    void finish();

    /// Upholds what was asked for as if the stream were new: somebody may set it back now who does
    /// not know of it.
    void uphold();

    /// Upholds nothing any more, until the next adopt(). What was asked for is still brought about.
    void release() noexcept { keeper_.release(); }

    /// The level of what the program plays, 0 to 1: 0 unless the stream runs. That is before the
    /// volume that a person wants, but after the program's own. Peaks in `measured` are those after
    /// both.
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
    const std::unique_ptr<platform::Timer> review_; // of the obstacle, when all has been told

    VolumeKeeper keeper_;
    const std::unique_ptr<platform::Timer> wake_; // for what the keeper has to do later

    float lastLevel_ = 0.0F; // before all gains
    platform::MonotonicClock::time_point gainSettled_;

    ProxyHandle<pw_node> node_; // is only listened to
    ListenerHook hook_;
};
