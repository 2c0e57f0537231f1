#pragma once

#include "comm/MVCommMessages.h"

#include <sys/types.h>
#include <unistd.h>

/// Called on the main thread with each activity message; the message is the caller's.
using MVCommDataCallback = void (*)(const MVCommActivityMessage* message);

/// Called on the main thread when plug-ins have come, or one has gone.
using MVCommCallback = void (*)();

/// What a socket server asks of the façade that owns it.
class MVCommCallbacks {
  public:
    virtual ~MVCommCallbacks() = default;

    /// Must not be null once plug-ins send.
    virtual MVCommDataCallback dataCallback() const = 0;

    /// May be null.
    virtual MVCommCallback connectionCallback() const = 0;
    virtual MVCommCallback disconnectionCallback() const = 0;

    /// A server has made its socket file again, for which plug-ins may be waiting.
    virtual void socketRecreated() {}

    /// Whether programs of `user` may connect: those of our own user and the system's, for nobody
    /// else has business with the volume of our sound.
    virtual bool acceptsUser(uid_t user) const { return user == ::geteuid() || user == 0; }
};
