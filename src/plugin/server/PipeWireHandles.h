#pragma once

#include <memory>
#include <pipewire/pipewire.h>
#include <spa/utils/hook.h>

/// Scope classes for the handles of the PipeWire library. All belong to the thread of its loop.

struct ProxyDeleter {
    template <typename Interface>
    void operator()(Interface* proxy) const noexcept {
        pw_proxy_destroy(reinterpret_cast<pw_proxy*>(proxy));
    }
};

/// Our end of an object in the server. Must go before the connection does.
template <typename Interface>
using ProxyHandle = std::unique_ptr<Interface, ProxyDeleter>;

/// A place in the listeners of an object, left when it goes. Declare it after the object's handle,
/// so that it goes first; drop it before the object otherwise.
class ListenerHook {
  public:
    ListenerHook() noexcept = default;
    ~ListenerHook() {
        if (hook_.link.next != nullptr)
            spa_hook_remove(&hook_);
    }
    ListenerHook(const ListenerHook&) = delete;
    ListenerHook& operator=(const ListenerHook&) = delete;

    spa_hook* get() noexcept { return &hook_; }

  private:
    spa_hook hook_{};
};
