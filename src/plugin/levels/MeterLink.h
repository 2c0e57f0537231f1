#pragma once

#include "plugin/server/PipeWireHandles.h"

#include <cstdint>
#include <functional>

/// Our link between an output port of a stream and an input of a meter. It does not keep either end
/// running, and is removed with this object or with our connection. The run loop's thread only;
/// destroy it before the server's connection.
class MeterLink {
  public:
    struct Ends {
        std::uint32_t outputNode;
        std::uint32_t outputPort;
        std::uint32_t inputNode;
        std::uint32_t inputPort;
    };

    /// `changed` is called when isMade() or isLost() may have changed; it must not destroy the
    /// link.
    MeterLink(pw_core& core, const Ends& ends, std::function<void()> changed);
    MeterLink(const MeterLink&) = delete;
    MeterLink& operator=(const MeterLink&) = delete;

    /// Whether the server has created the link, so that the measurement is that of this stream.
    [[nodiscard]] bool isMade() const noexcept { return made_; }

    /// Whether the server refused or removed the link.
    [[nodiscard]] bool isLost() const noexcept { return lost_; }

  private:
    void lost();

    static const pw_proxy_events proxyEvents;

    const std::function<void()> changed_;
    bool made_ = false;
    bool lost_ = false;
    ProxyHandle<pw_proxy> proxy_;
    ListenerHook hook_;
};
