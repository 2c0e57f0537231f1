#pragma once

#include <stdexcept>
#include <string>

/// The exit codes of tonvalectl. Scripts rely on the numbers.
enum class ExitCode : int {
    success = 0,
    failed = 1, ///< for any other reason
    usage = 2,
    notRunning = 3,
    noSuchProgram = 4,
    ambiguousName = 5,
    invalidVolume = 6,
    notControllable = 7,
    busLost = 8,
};

/// A command's failure: what() is a one-line message for the user, without the program's name.
class Failure : public std::runtime_error {
  public:
    Failure(ExitCode code, const std::string& text) : std::runtime_error(text), code_(code) {}

    [[nodiscard]] ExitCode code() const noexcept { return code_; }

  private:
    ExitCode code_;
};
