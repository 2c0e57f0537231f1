#pragma once

#include <stdexcept>
#include <string>

/// How tonvalectl ends. Scripts rely on the numbers.
enum class ExitCode : int {
    success = 0,
    failed = 1, ///< for a reason that none of the others is
    usage = 2,
    notRunning = 3,
    noSuchProgram = 4,
    ambiguousName = 5,
    invalidVolume = 6,
    notControllable = 7,
    busLost = 8,
};

/// Why a command cannot be carried out: what() is one line for people, without the program's name.
class Failure : public std::runtime_error {
  public:
    Failure(ExitCode code, const std::string& text) : std::runtime_error(text), code_(code) {}

    ExitCode code() const noexcept { return code_; }

  private:
    ExitCode code_;
};
