#pragma once

#include "platform/base/FileDescriptor.h"

#include <optional>
#include <string>
#include <sys/types.h>

namespace platform {

/// Unix-domain stream sockets at paths that may be longer than the kernel's address field (107
/// bytes), whatever PATH_MAX allows. All descriptors are close-on-exec. Any thread.

/// A new, unconnected socket; empty with errno set on failure.
[[nodiscard]] FileDescriptor makeUnixSocket() noexcept;

/// Binds `socket` to `path`, which must not exist. False, with errno set, on failure.
[[nodiscard]] bool bindUnixSocket(int socket, const std::string& path) noexcept;

/// The same, and every user may connect: the file is created with mode 0777, whatever the process's
/// umask. Changing the mode by path afterwards would trust everyone who may write to the folder. If
/// the system does not support this, the umask applies, with a line in the system log.
[[nodiscard]] bool bindUnixSocketForAll(int socket, const std::string& path) noexcept;

/// Connects to the socket at `path` without waiting: a full backlog counts as a failure with
/// EAGAIN. Empty with errno set on failure.
[[nodiscard]] FileDescriptor connectUnixSocket(const std::string& path) noexcept;

/// The user that the process at the other end ran as when it connected or began to listen. False,
/// with errno set, on failure.
[[nodiscard]] bool peerUser(int socket, uid_t& user) noexcept;

/// The process that connected or began to listen at the other end. Nothing, with errno set, on
/// failure; also nothing if it is in another pid namespace.
[[nodiscard]] std::optional<pid_t> peerProcess(int socket) noexcept;

} // namespace platform
