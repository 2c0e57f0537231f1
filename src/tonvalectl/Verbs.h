#pragma once

#include "tonvalectl/Command.h"

#include <span>

/// One thing that tonvalectl can do. The tables below are the only place that declares them:
/// parsing, --help and what is carried out follow from it.
struct Verb {
    const char* word;
    const char* arguments;               ///< "NAME PERCENT"; one in brackets may be left out
    const char* help;                    ///< a few words; none where the verb before says it too
    void (*run)(const Command& command); ///< throws Failure
};

/// What goes with some of the verbs.
struct Option {
    const char* word;
    const char* verbs; ///< their words
    const char* help;
    bool Command::*flag; ///< that it sets
};

std::span<const Verb> verbs();
std::span<const Option> options();

/// The options that stand for a whole command, the strongest first.
std::span<const Verb> verbOptions();
