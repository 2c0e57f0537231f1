#pragma once

#include "platform/volumes/DiskImage.h"

#include <QDBusConnection>

#include <functional>

namespace platform {

/// Unmounts a disk image and gives its loop device back, by the desktop's disk service (UDisks), if
/// this user has had it mounted there; never asks for a password. Calls `over`, once, from the
/// event loop or at once, with whether it is unmounted. What is not ours to do, or cannot be done,
/// is left as it is. Main thread only.
void ejectDiskImage(const QDBusConnection& systemBus, const DiskImage& image,
                    const std::function<void(bool isUnmounted)>& over);

} // namespace platform
