#pragma once

#include <string>
#include <string_view>

namespace platform {

/// The id of the application that a process belongs to as a part of a sandbox, from what the kernel
/// shows of the process: the sandbox's own description at the root of its file system, else the
/// control group that it was started in. A flatpak's id is that of the flatpak, a snap's is
/// "snap." and its name. Empty for a process of no known sandbox. Any thread.
std::string sandboxApplication(std::string_view flatpakDescription, std::string_view controlGroups);

} // namespace platform
