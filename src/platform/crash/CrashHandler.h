#pragma once

#include "platform/crash/CrashFolder.h"
#include "platform/crash/CrashRecord.h"

#include <string>

namespace platform {

/// What becomes of the report of a crash.
enum class CrashHandling {
    on,
    off,       ///< the user wants none, or a debugger or sanitizer watches the process
    silenced,  ///< this program has died too often lately, see isCrashLoop()
    impossible ///< the folder cannot be written
};

/// From now on, this process leaves a record when it dies of a signal that means a fault, or of an
/// exception that nobody catches: what has happened, where, with which registers, and what was
/// loaded. The handler allocates nothing and takes no lock, has a stack of its own in every thread
/// (AlternateStack), and gives up after 5 s. Then the process dies as it would have, by the
/// handlers that were there before.
///
/// Call it early, once, on the main thread. It makes a file, which is removed when the program ends
/// by exit().
CrashHandling handleCrashes(const CrashProgram& program, const std::string& folder = crashFolder());

/// Makes sure that there will be room on the disk for the record. For programs that run long; it
/// may have to wait for the disk. Any thread, after handleCrashes(). If that was impossible, or
/// this is, it is a line in the system log.
void reserveCrashRoom();

} // namespace platform
