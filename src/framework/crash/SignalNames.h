#pragma once

#include <string>

/// A signal by its number: "SIGSEGV (segmentation fault)".
std::string signalName(int signal);

/// What the code of a signal says about its cause; empty if nothing.
std::string signalCause(int signal, int code);
