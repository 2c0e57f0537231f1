#pragma once

#include "platform/base/FileDescriptor.h"

#include <fcntl.h>

namespace platform {

/// What happens to a path that is itself a link.
enum class LastLink { follow, refuse };

/// Opens a regular file for reading, without waiting for whoever writes into a pipe of that name.
/// A relative path begins at the folder `folder`. Empty, with errno set, if it cannot be opened;
/// EINVAL if something else has that name. Any thread.
[[nodiscard]] FileDescriptor openRegularFile(const char* path, LastLink link,
                                             int folder = AT_FDCWD) noexcept;

} // namespace platform
