#pragma once

#include <QString>

#include <cstdint>

namespace platform {

/// An amount of bytes for people, in units of 1024: "512 bytes", "1.5 KB", "16 GB". The number has
/// at most one decimal and is written as in the default locale. Any thread.
QString binaryByteCount(std::uint64_t bytes);

} // namespace platform
