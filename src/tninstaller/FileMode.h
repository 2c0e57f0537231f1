#pragma once

#include <sys/types.h>

/// Gives an open file or folder that this process has made `mode` and nothing else: the folder
/// above may hand its group and its access list down. False, with errno set, if that fails.
[[nodiscard]] bool setOwnMode(int descriptor, mode_t mode) noexcept;
