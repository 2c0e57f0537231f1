#pragma once

#include <cstdint>
#include <sys/types.h>

/// Returns when the process that has started at that time (see platform::processStartTime()) is
/// gone; a later process of the same number is not waited for. Looks every 200 ms, or is woken by
/// the kernel. After a minute one line in the system log says that it still waits.
void waitForEndOf(pid_t process, std::uint64_t startTime);
