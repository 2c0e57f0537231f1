#pragma once

#include "platform/files/FileDescriptor.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <unistd.h>

namespace support {

/// The process gets no further descriptor while it lives; those that it has stay.
class NoDescriptorsLeft {
  public:
    NoDescriptorsLeft() {
        EXPECT_EQ(::getrlimit(RLIMIT_NOFILE, &previous_), 0);
        const platform::FileDescriptor lowestFree(::dup(STDERR_FILENO));
        rlimit none = previous_;
        none.rlim_cur = static_cast<rlim_t>(lowestFree.get());
        EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    }
    ~NoDescriptorsLeft() { ::setrlimit(RLIMIT_NOFILE, &previous_); }
    NoDescriptorsLeft(const NoDescriptorsLeft&) = delete;
    NoDescriptorsLeft& operator=(const NoDescriptorsLeft&) = delete;

  private:
    rlimit previous_{};
};

} // namespace support
