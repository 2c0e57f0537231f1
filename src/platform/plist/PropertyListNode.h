#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string_view>

namespace platform {

/// A property list in libplist's representation. For code that converts property lists into its own
/// values (PropertyList, Bundle).

struct PropertyListDeleter {
    void operator()(void* node) const noexcept;
};

/// Owns a whole tree; libplist's plist_t.
using PropertyListNode = std::unique_ptr<void, PropertyListDeleter>;

/// The maximum nesting depth. libplist and our code walk trees recursively.
inline constexpr std::size_t propertyListDepth = 128;

/// The maximum size; in the binary form also the maximum number of values after expanding
/// containers that are referenced several times.
inline constexpr std::size_t propertyListBytes = 64U << 20U;
inline constexpr std::size_t propertyListValues = 1U << 20U;

/// Parses XML or the binary form. Null if it is damaged, truncated or beyond the limits above. Any
/// thread.
PropertyListNode readPropertyList(std::string_view bytes);

/// Calls `take` with the key and the node of each entry of a dictionary, which owns both.
void forEachEntry(void* dictionary, const std::function<void(const char* key, void* value)>& take);

/// While it lives, numbers are read and written with a decimal point, whatever the program's
/// locale: libplist uses the locale. The calling thread only.
class NumericCLocale {
  public:
    NumericCLocale() noexcept;
    ~NumericCLocale();
    NumericCLocale(const NumericCLocale&) = delete;
    NumericCLocale& operator=(const NumericCLocale&) = delete;

  private:
    void* previous_;
};

} // namespace platform
