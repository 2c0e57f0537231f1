#include "plugin/identity/NamespacePids.h"
#include "support/ChildProcess.h"
#include "support/WaitUntil.h"

#include <gmock/gmock.h>

#include <csignal>
#include <fstream>
#include <string>
#include <unistd.h>

TEST(NamespacePids, AreThoseThatAProcessHasForItself) {
    NamespacePids numbers;
    support::ChildProcess plain({"sleep", "60"});
    for (int i = 0; i < 2; ++i) {
        EXPECT_THAT(numbers.find(plain.pid()), testing::ElementsAre(plain.pid()));
        EXPECT_THAT(numbers.find(::getpid()), testing::ElementsAre(::getpid()));
    }
    plain.stop(SIGKILL);
    EXPECT_THAT(numbers.find(plain.pid()), testing::IsEmpty());

    support::ChildProcess outer(
        {"unshare", "--user", "--pid", "--fork", "--kill-child", "sleep", "60"});
    std::ifstream file;
    pid_t inner = 0;
    if (!support::waitUntil([&] {
            const std::string folder = "/proc/" + std::to_string(outer.pid());
            file = std::ifstream(folder + "/task/" + std::to_string(outer.pid()) + "/children");
            return static_cast<bool>(file >> inner) || !outer.isRunning();
        }) ||
        !outer.isRunning())
        GTEST_SKIP() << "the system does not allow namespaces";
    EXPECT_THAT(numbers.find(1), testing::Contains(inner));
    EXPECT_THAT(numbers.find(inner), testing::IsEmpty());
    outer.stop(SIGKILL);
}
