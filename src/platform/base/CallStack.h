#pragma once

#include <array>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <utility>

namespace platform {

/// The return addresses of the functions that led to a place in the program, for messages about
/// what went wrong. Taking one is cheap, describing it is not. Any thread.
class CallStack {
  public:
    /// The caller's, without this function.
    static CallStack here() noexcept;

    /// One line a function, the innermost first: "0 Tonvale MVComm::shutdown() + 18". A function
    /// whose name is not known shows its address within its file.
    std::string description() const;

  private:
    std::array<void*, 48> addresses_{};
    std::size_t count_ = 0;
};

/// What an exception is made of besides its type and text if it shall tell where it was made.
class Traced {
  public:
    virtual ~Traced() = default;
    const CallStack& callStack() const noexcept { return callStack_; }

  protected:
    Traced() noexcept : callStack_(CallStack::here()) {}

  private:
    CallStack callStack_;
};

/// An exception of a standard type that tells where it was made.
template <typename Standard>
class TracedError : public Standard, public Traced {
  public:
    using Standard::Standard;
};

} // namespace platform
