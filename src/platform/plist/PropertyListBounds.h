#pragma once

#include <string_view>

namespace platform {

/// Whether libplist can be given these bytes: they stay within the bounds of PropertyListNode.h, so
/// that its recursion ends in time and its memory is bounded. They may still be damaged. Any
/// thread.
bool isWithinPropertyListBounds(std::string_view bytes);

} // namespace platform
