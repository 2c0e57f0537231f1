#pragma once

#include <csignal>
#include <cstdint>
#include <ucontext.h>

namespace platform {

class CrashWriter;

/// The state of a thread that a signal has interrupted. All of it may be called in the handler of
/// that signal.
class CrashContext {
  public:
    CrashContext(ucontext_t& context, const siginfo_t& info) noexcept
        : context_(context), info_(info) {}

    [[nodiscard]] std::uint64_t programCounter() const noexcept;
    [[nodiscard]] std::uint64_t stackPointer() const noexcept;

    /// A line "register NAME NUMBER" for each.
    void writeRegisters(CrashWriter& out) const noexcept;

    /// A line "frame NUMBER" for each function, the innermost first; "more" behind the last one if
    /// there are more. Reads the stack, which may be damaged: expect another signal.
    void writeFrames(CrashWriter& out) const noexcept;

  private:
    [[nodiscard]] bool isCallOfNothing() const noexcept;
    void returnToCaller() const noexcept;

    ucontext_t& context_;
    const siginfo_t& info_;
};

} // namespace platform
