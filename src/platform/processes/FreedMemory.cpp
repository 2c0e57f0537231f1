#include "platform/processes/FreedMemory.h"

#include <cstddef>
#include <cstdlib>

namespace platform {

void mergeFreedMemory() noexcept {
    // glibc does it before it looks for a block of this size, and has no call for that alone:
    // malloc_trim(3) gives the memory back to the system too, page by page.
    constexpr std::size_t large = 4096;
    void* volatile block = std::malloc(large); // or the compiler would leave both calls out
    std::free(block);
}

} // namespace platform
