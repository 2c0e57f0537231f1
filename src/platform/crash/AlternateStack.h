#pragma once

#include <cstddef>

namespace platform {

/// A stack for the signal handlers of the thread that makes it, for when its own has overflowed:
/// without one, the kernel kills the process before any handler runs. A thread that has one keeps
/// that. Costs address space until it is used. Destroy it on the same thread.
///
/// In a program with this class, every thread that any library starts gets one: the program's own
/// pthread_create() stands before the C library's. Not under sanitizers.
class AlternateStack {
  public:
    AlternateStack() noexcept;
    ~AlternateStack();
    AlternateStack(const AlternateStack&) = delete;
    AlternateStack& operator=(const AlternateStack&) = delete;

  private:
    void* memory_ = nullptr; // null: the thread has another one, or there was no memory
};

} // namespace platform
