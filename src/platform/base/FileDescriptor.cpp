#include "platform/base/FileDescriptor.h"

#include <unistd.h>

namespace platform {

void FileDescriptor::reset(int descriptor) noexcept {
    if (descriptor_ >= 0)
        ::close(descriptor_);
    descriptor_ = descriptor;
}

} // namespace platform
