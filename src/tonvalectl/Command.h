#pragma once

#include <optional>
#include <string>
#include <vector>

struct Verb;

/// A parsed command line of tonvalectl.
struct Command {
    const Verb* verb;
    std::string name;                 ///< of a program, as typed; empty if missing
    std::optional<std::string> value; ///< a volume, as typed
    bool json = false;
    bool all = false;     ///< include those that do not run
    bool names = false;   ///< nothing but names
    bool ignored = false; ///< list the ignored names

    /// `arguments` do not include the program's own name. Throws Failure if they are invalid.
    static Command parse(const std::vector<std::string>& arguments);
};
