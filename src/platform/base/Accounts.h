#pragma once

#include <optional>
#include <string>
#include <sys/types.h>

namespace platform {

/// The ids of users and groups, from whatever the system takes them from (files, directory
/// services, which may take their time). Nothing if there is no such name. Any thread.

[[nodiscard]] std::optional<uid_t> userNamed(const std::string& name);
[[nodiscard]] std::optional<gid_t> groupNamed(const std::string& name);

} // namespace platform
