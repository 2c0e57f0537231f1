#pragma once

#include <optional>
#include <string>
#include <vector>

struct Verb;

/// What the arguments of tonvalectl ask for.
struct Command {
    const Verb* verb;
    std::string name;                 ///< of a program, as it was written; empty without
    std::optional<std::string> value; ///< of a volume, likewise
    bool json = false;
    bool all = false;     ///< those that do not run, too
    bool names = false;   ///< nothing but names
    bool ignored = false; ///< of those that are ignored

    /// `arguments` are without the program's own name. Throws Failure when they make no sense.
    static Command parse(const std::vector<std::string>& arguments);
};
