#pragma once

#include <chrono>
#include <string>

namespace platform {

/// Ends this user's processes whose executable, or whose name by the kernel, is called `name`, but
/// not this one: SIGTERM, and SIGKILL for those that are still there after `patience`. Returns when
/// they are gone; false if one is still there as long after SIGKILL, which only a hanging device or
/// disk brings about. Processes that start meanwhile are not noticed.
///
/// Blocks for that long: never on the main thread, see waitServingEvents(). Any other thread.
[[nodiscard]] bool endProcesses(const std::string& name,
                                std::chrono::seconds patience = std::chrono::seconds(2));

} // namespace platform
