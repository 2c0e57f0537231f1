#pragma once

#include <chrono>
#include <functional>
#include <pthread.h>
#include <string>

namespace platform {

/// The calls to the system by which the engines start threads and have them pause. Tests put calls
/// that fail, or that do not take their time, in their place.
class ThreadCalls {
  public:
    virtual ~ThreadCalls() = default;

    /// pthread_create(3) with default attributes. 0, or an error number.
    virtual int start(pthread_t* thread, void* (*body)(void*), void* argument) noexcept;

    virtual void pause(std::chrono::nanoseconds time) noexcept;
};

/// Those in use. Any thread.
ThreadCalls& threadCalls() noexcept;

/// Has `calls` be used, which are not owned and must stay; null: the system's again. Any thread.
void replaceThreadCalls(ThreadCalls* calls) noexcept;

/// Names the calling thread for debuggers, `ps` and `top`. The kernel keeps 15 bytes.
void nameThisThread(const std::string& name) noexcept;

/// Starts a thread that nobody waits for, named as above. Throws std::system_error when the system
/// gives none.
void startDetachedThread(std::string name, std::function<void()> body);

} // namespace platform
