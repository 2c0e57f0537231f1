#pragma once

#include <QString>

#include <cstdint>

namespace platform {

/// A human-readable number of bytes, in units of 1024: "512 bytes", "1.5 KB", "16 GB". At most one
/// decimal, formatted in the default locale. Any thread.
QString binaryByteCount(std::uint64_t bytes);

} // namespace platform
