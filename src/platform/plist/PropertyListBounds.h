#pragma once

#include <string_view>

namespace platform {

/// Whether libplist can safely parse these bytes: they stay within the limits of
/// PropertyListNode.h, which bound its recursion and memory. They may still be damaged. Any thread.
[[nodiscard]] bool isWithinPropertyListBounds(std::string_view bytes);

} // namespace platform
