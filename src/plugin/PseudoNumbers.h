#pragma once

#include <cstdint>
#include <map>
#include <string>

/// The numbers of programs that have no process here. Each program has the one that follows from
/// its identity, unless another has that already.
class PseudoNumbers {
  public:
    /// The number of the program, which nobody else has until it is released. `natural`, from
    /// StreamProcess::firstPseudoProcess to lastPseudoProcess, is the one that its identity
    /// suggests.
    std::uint32_t take(const std::string& identity, std::uint32_t natural);

    /// The program has gone. One that had to take another number keeps it for the next time.
    void release(const std::string& identity);

  private:
    std::map<std::uint32_t, std::string> owners_;
    std::map<std::string, std::uint32_t> displaced_;
};
