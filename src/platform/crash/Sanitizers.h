#pragma once

namespace platform {

/// Whether a sanitizer watches this process, which then reports crashes itself.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool isSanitized = true;
#define TONVALE_SANITIZED
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
inline constexpr bool isSanitized = true;
#define TONVALE_SANITIZED
#else
inline constexpr bool isSanitized = false;
#endif
#else
inline constexpr bool isSanitized = false;
#endif

} // namespace platform
