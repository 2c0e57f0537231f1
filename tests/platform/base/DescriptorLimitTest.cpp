#include "platform/base/DescriptorLimit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

rlimit currentLimit() {
    rlimit limit{};
    EXPECT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
    return limit;
}

} // namespace

TEST(DescriptorLimit, IsRaisedForTheProgramAndGivenBackInItsChildren) {
    const rlimit before = currentLimit();
    rlimit small = before;
    small.rlim_cur = 300;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &small), 0);
    platform::raiseDescriptorLimit();
    EXPECT_EQ(currentLimit().rlim_cur, std::min<rlim_t>(before.rlim_max, 65536));
    EXPECT_EQ(currentLimit().rlim_max, before.rlim_max);
    platform::raiseDescriptorLimit(); // must not take the raised limit for the old one

    const pid_t child = ::fork();
    if (child == 0) {
        platform::restoreDescriptorLimit();
        rlimit limit{};
        ::getrlimit(RLIMIT_NOFILE, &limit);
        ::_exit(limit.rlim_cur == 300 && limit.rlim_max == before.rlim_max ? 0 : 1);
    }
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);

    rlimit larger = currentLimit();
    larger.rlim_cur = larger.rlim_max;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &larger), 0);
    platform::raiseDescriptorLimit();
    EXPECT_EQ(currentLimit().rlim_cur, larger.rlim_max) << "never lowered";
    ::setrlimit(RLIMIT_NOFILE, &before);
}

TEST(DescriptorLimit, LeavesAHundredAndTwentyEightOrAQuarterToTheProcessItself) {
    const rlimit before = currentLimit();
    const struct {
        rlim_t limit;
        int firstReserved;
    } cases[] = {{64, 48}, {300, 225}, {511, 384}, {512, 384}, {1024, 896}};
    for (const auto& each : cases) {
        rlimit limit = before;
        limit.rlim_cur = each.limit;
        ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
        EXPECT_EQ(platform::firstReservedDescriptor(), each.firstReserved) << each.limit;
    }
    ::setrlimit(RLIMIT_NOFILE, &before);
}
