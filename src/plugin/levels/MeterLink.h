#pragma once

#include "plugin/server/PipeWireHandles.h"

#include <cstdint>
#include <functional>

/// A link of ours between an output port of a stream and an input of a meter. It keeps neither end
/// running, and goes with this object or with our connection. The run loop's thread only; must go
/// before the server's connection does.
class MeterLink {
  public:
    struct Ends {
        std::uint32_t outputNode;
        std::uint32_t outputPort;
        std::uint32_t inputNode;
        std::uint32_t inputPort;
    };

    /// `changed` is called when isMade() or isLost() may answer something else; it must not destroy
    /// the link.
    MeterLink(pw_core& core, const Ends& ends, std::function<void()> changed);
    MeterLink(const MeterLink&) = delete;
    MeterLink& operator=(const MeterLink&) = delete;

    /// Whether the server has made the link, so that what is measured comes from this stream.
    bool isMade() const noexcept { return made_; }

    /// Whether the server refused or removed the link.
    bool isLost() const noexcept { return lost_; }

  private:
    void lost();

    static const pw_proxy_events proxyEvents;

    const std::function<void()> changed_;
    bool made_ = false;
    bool lost_ = false;
    ProxyHandle<pw_proxy> proxy_;
    ListenerHook hook_;
};
