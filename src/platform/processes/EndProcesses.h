#pragma once

#include <string>

namespace platform {

/// Ends this user's processes whose executable, or whose name by the kernel, is called `name`, but
/// not this one: SIGTERM, and SIGKILL for those that are still there after 2 s. Returns when they
/// are gone; false if one is still there 2 s after SIGKILL, which only a hanging device or disk
/// brings about. Processes that start meanwhile are not noticed.
///
/// Blocks for that long: never on the main thread, see waitServingEvents(). Any other thread.
[[nodiscard]] bool endProcesses(const std::string& name);

} // namespace platform
