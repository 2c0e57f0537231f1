#pragma once

#include <string>
#include <string_view>

namespace platform {

/// The id of the sandboxed application that a process belongs to, from kernel data: the sandbox's
/// description at the root of the process's file system, else its control group. For a flatpak this
/// is the flatpak's id, for a snap "snap." and its name. Empty for a process outside known
/// sandboxes. Any thread.
std::string sandboxApplication(std::string_view flatpakDescription, std::string_view controlGroups);

} // namespace platform
