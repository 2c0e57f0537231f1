#pragma once

#include "comm/MVCommMessages.h"

#include <sys/types.h>
#include <unistd.h>

/// Called on the main thread with each activity message, which is valid during the call only.
using MVCommDataCallback = void (*)(const MVCommActivityMessage* message);

/// Called on the main thread when plug-ins have connected, or one has disconnected.
using MVCommCallback = void (*)();

/// The interface through which a socket server calls the façade that owns it.
class MVCommCallbacks {
  public:
    virtual ~MVCommCallbacks() = default;

    /// Must not be null once plug-ins send.
    [[nodiscard]] virtual MVCommDataCallback dataCallback() const = 0;

    /// May be null.
    [[nodiscard]] virtual MVCommCallback connectionCallback() const = 0;
    [[nodiscard]] virtual MVCommCallback disconnectionCallback() const = 0;

    /// A server has recreated its socket file; plug-ins may be waiting for it.
    virtual void socketRecreated() {}

    /// Whether programs of `user` may connect: only our own user and root may.
    [[nodiscard]] virtual bool acceptsUser(uid_t user) const {
        return user == ::geteuid() || user == 0;
    }
};
