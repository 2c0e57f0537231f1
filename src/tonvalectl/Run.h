#pragma once

#include "tonvalectl/Command.h"

/// Carries out a command that needs the running application, and prints what it asks for. Throws
/// Failure.
void run(const Command& command);
