#pragma once

#include <array>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <utility>

namespace platform {

/// A call stack as return addresses, for error messages. Capturing one is cheap, describing it is
/// not. Any thread.
class CallStack {
  public:
    /// The caller's call stack, without this function.
    static CallStack here() noexcept;

    /// One line a function, the innermost first: "0 Tonvale MVComm::shutdown() + 18". A function
    /// without a known name is shown with its address within its file.
    [[nodiscard]] std::string description() const;

  private:
    std::array<void*, 48> addresses_{};
    std::size_t count_ = 0;
};

/// Mix-in for exceptions that record the call stack of their creation.
class Traced {
  public:
    virtual ~Traced() = default;
    [[nodiscard]] const CallStack& callStack() const noexcept { return callStack_; }

  protected:
    Traced() noexcept : callStack_(CallStack::here()) {}

  private:
    CallStack callStack_;
};

/// An exception of a standard type with the call stack of its creation.
template <typename Standard>
class TracedError : public Standard, public Traced {
  public:
    using Standard::Standard;
};

} // namespace platform
