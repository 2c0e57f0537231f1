#pragma once

#include <cstdint>
#include <map>
#include <string>

/// The numbers of programs that have no process here. Each program has the one that follows from
/// its name, unless another has that already.
class PseudoPids {
  public:
    /// No kernel gives a process such a number (its limit is 2^22).
    static constexpr std::uint32_t first = 0x40000000;
    static constexpr std::uint32_t last = 0x7FFFFFFE;

    static bool isOne(std::uint32_t number) noexcept { return number >= first; }

    /// The number of the program, which nobody else has until it is released. The same in each run,
    /// as far as it can be.
    std::uint32_t take(const std::string& program);

    /// The program has gone. One that had to take another number keeps it for the next time.
    void release(const std::string& program);

  private:
    std::map<std::uint32_t, std::string> owners_;
    std::map<std::string, std::uint32_t> displaced_;
};
