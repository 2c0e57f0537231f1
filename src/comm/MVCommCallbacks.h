#pragma once

#include "comm/MVCommMessages.h"

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
};
