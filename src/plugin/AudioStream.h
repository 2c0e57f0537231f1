#pragma once

#include "platform/MonotonicClock.h"
#include "platform/StreamProcess.h"
#include "plugin/NodeWriter.h"
#include "plugin/PipeWireHandles.h"
#include "plugin/StreamVolume.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

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
    };

    /// Watches the node `id` of the server, which must be connected. `listener` must outlive the
    /// stream.
    AudioStream(platform::RunLoop& loop, const AudioServer& server, std::uint32_t id,
                Listener& listener);
    AudioStream(const AudioStream&) = delete;
    AudioStream& operator=(const AudioStream&) = delete;

    std::uint32_t id() const noexcept { return id_; }

    /// Whether the node has told what it is.
    bool isDescribed() const noexcept { return described_; }

    /// Fills in what the node claims about its process.
    void describeTo(platform::StreamEvidence& evidence) const;

    /// Whether the stream belongs to a chain of filters or a loop-back, not to a program.
    bool isInternal() const noexcept { return internal_; }

    bool isRunning() const noexcept { return running_; }

    /// What the server told of its volume; nothing until it has.
    const std::optional<StreamProps>& props() const noexcept { return props_; }

    /// What was asked for.
    const WantedVolume& wanted() const noexcept { return wanted_; }

    /// Forgets what was asked for and asks for `all` instead; for a stream that changes hands.
    void adopt(const WantedVolume& all);

    /// Asks for a volume, a mute, or both. It is written at once, or as soon as the stream can take
    /// it, and upheld for as long as the stream is new. Nothing is ever written unasked.
    void want(const WantedVolume& change);

    /// Upholds what was asked for as if the stream were new: somebody may set it back now who does
    /// not know of it.
    void uphold();

    /// The level of what is played, before the gain, 0 to 1: 0 unless the stream runs. Peaks in
    /// `measured` are those after the gain.
    float level(std::span<const ChannelPeak> measured);

  private:
    void informed(const pw_node_info& info);
    void propsChanged(const spa_pod* param);
    void takeOver(const StreamProps& props);
    void write(const WantedVolume& change);

    static const pw_node_events nodeEvents;

    const std::uint32_t id_;
    Listener& listener_;

    platform::StreamEvidence claims_;
    bool described_ = false;
    bool internal_ = false;
    bool running_ = false;

    std::optional<StreamProps> props_;
    std::vector<float> balance_; // the last channel volumes that were not all zero
    WantedVolume wanted_;
    VolumeHold hold_;

    float lastLevel_ = 0.0F;
    platform::MonotonicClock::time_point gainSettled_;

    ProxyHandle<pw_node> node_; // is only listened to
    ListenerHook hook_;
    NodeWriter writer_;
};
