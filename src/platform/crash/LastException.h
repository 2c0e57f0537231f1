#pragma once

#include <string_view>

namespace platform {

/// From now on, what std::terminate() is called for is kept, and the earlier handler goes on.
void keepLastException() noexcept;

/// The type, as the compiler spells it, and what() of the exception that nobody has caught. Empty
/// if there is none. May be called in a signal handler.
[[nodiscard]] std::string_view lastExceptionType() noexcept;
[[nodiscard]] std::string_view lastExceptionText() noexcept;

} // namespace platform
