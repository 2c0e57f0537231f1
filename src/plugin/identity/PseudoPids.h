#pragma once

#include <cstdint>
#include <map>
#include <string>

/// Pseudo pids for programs without a local process. A program's pseudo pid is derived from its
/// name, unless that one is in use.
class PseudoPids {
  public:
    /// Beyond the kernel's limit of 2^22.
    static constexpr std::uint32_t first = 0x40000000;
    static constexpr std::uint32_t last = 0x7FFFFFFE;

    [[nodiscard]] static bool isOne(std::uint32_t number) noexcept { return number >= first; }

    /// The program's pseudo pid, which is unique until it is released. The same in each run, if
    /// possible.
    std::uint32_t take(const std::string& program);

    /// The program has ended. One that had to take another pseudo pid gets it again the next time.
    void release(const std::string& program);

  private:
    std::map<std::uint32_t, std::string> owners_;
    std::map<std::string, std::uint32_t> displaced_;
};
