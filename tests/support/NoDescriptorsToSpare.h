#pragma once

#include "platform/base/FileDescriptor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sys/resource.h>
#include <unistd.h>

namespace support {

/// While it lives, no descriptor below those that the process keeps for its own work is free
/// (platform::firstReservedDescriptor()); those that are open stay.
class NoDescriptorsToSpare {
  public:
    NoDescriptorsToSpare() {
        EXPECT_EQ(::getrlimit(RLIMIT_NOFILE, &previous_), 0);
        const platform::FileDescriptor lowestFree(::dup(STDERR_FILENO));
        const auto reserved = static_cast<rlim_t>(lowestFree.get());
        rlimit full = previous_;
        full.rlim_cur = reserved + std::min<rlim_t>(reserved / 3, 128);
        EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &full), 0);
    }
    ~NoDescriptorsToSpare() { ::setrlimit(RLIMIT_NOFILE, &previous_); }
    NoDescriptorsToSpare(const NoDescriptorsToSpare&) = delete;
    NoDescriptorsToSpare& operator=(const NoDescriptorsToSpare&) = delete;

  private:
    rlimit previous_{};
};

} // namespace support
