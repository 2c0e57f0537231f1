#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string_view>

namespace platform {

/// A property list as libplist keeps it, in memory. For what turns property lists into values of
/// its own (PropertyList, Bundle).

struct PropertyListDeleter {
    void operator()(void* node) const noexcept;
};

/// Owns a whole tree; libplist's plist_t.
using PropertyListNode = std::unique_ptr<void, PropertyListDeleter>;

/// How many containers may lie in one another. libplist and we walk trees by recursion.
inline constexpr std::size_t propertyListDepth = 128;

/// Longer property lists are not read, and in the binary form neither those that unfold to more
/// values, because containers are in several places.
inline constexpr std::size_t propertyListBytes = 64U << 20U;
inline constexpr std::size_t propertyListValues = 1U << 20U;

/// The tree that XML or the binary form describes. Null when it is damaged, cut off or beyond the
/// bounds above. Any thread.
PropertyListNode readPropertyList(std::string_view bytes);

/// Calls `take` with the key and the node of each entry of a dictionary, which owns both.
void forEachEntry(void* dictionary, const std::function<void(const char* key, void* value)>& take);

/// Numbers are read and written with a point while it lives, whatever the program's locale says:
/// libplist follows the locale. The calling thread only.
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
