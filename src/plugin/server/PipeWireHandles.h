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

/// Our proxy of an object in the server. Destroy it before the connection.
template <typename Interface>
using ProxyHandle = std::unique_ptr<Interface, ProxyDeleter>;

/// A registration as listener of an object, removed on destruction. Declare it after the object's
/// handle, so that it is destroyed first.
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
