#pragma once

#include <chrono>
#include <functional>
#include <pthread.h>
#include <string>

namespace platform {

/// The system calls with which the engines start threads and let them sleep. Tests replace them
/// with calls that fail or return at once.
class ThreadCalls {
  public:
    virtual ~ThreadCalls() = default;

    /// pthread_create(3) with default attributes. 0, or an error number.
    virtual int start(pthread_t* thread, void* (*body)(void*), void* argument) noexcept;

    virtual void pause(std::chrono::nanoseconds time) noexcept;
};

/// The calls in use. Any thread.
ThreadCalls& threadCalls() noexcept;

/// Installs `calls`, which are not owned and must outlive their use; null: the system's again. Any
/// thread.
void replaceThreadCalls(ThreadCalls* calls) noexcept;

/// Names the calling thread for debuggers, `ps` and `top`. The kernel keeps 15 bytes.
void nameThisThread(const std::string& name) noexcept;

/// Starts a detached thread, named as above. Throws std::system_error if the system has none left.
void startDetachedThread(std::string name, std::function<void()> body);

} // namespace platform
