#pragma once

#include "plugin/identity/StreamProcess.h"
#include "plugin/server/PipeWireHandles.h"

#include <cstdint>

/// A client of the sound server: what it claims about itself, and what the server knows about its
/// process. The run loop's thread only; destroy it before the server's connection.
class AudioClient {
  public:
    class Listener {
      public:
        virtual ~Listener() = default;

        /// The data of describeTo() has arrived or changed.
        virtual void clientDescribed(AudioClient& client) = 0;
    };

    /// Watches the client `id`, which was first seen at `appeared`, in platform::ticksSinceBoot().
    /// `listener` must outlive this.
    AudioClient(pw_registry& registry, std::uint32_t id, std::uint64_t appeared,
                Listener& listener);
    AudioClient(const AudioClient&) = delete;
    AudioClient& operator=(const AudioClient&) = delete;

    [[nodiscard]] std::uint32_t id() const noexcept { return id_; }

    /// Whether the client's data has arrived.
    [[nodiscard]] bool isDescribed() const noexcept { return described_; }

    /// Fills in the known data of the client.
    void describeTo(StreamEvidence& evidence) const;

  private:
    void informed(const pw_client_info& info);

    static const pw_client_events clientEvents;

    const std::uint32_t id_;
    Listener& listener_;
    StreamEvidence known_;
    bool described_ = false;
    ProxyHandle<pw_client> client_;
    ListenerHook hook_;
};
