#include "support/ChildProcess.h"
#include "support/PrivateFolder.h"
#include "support/SinkRecorder.h"

#include <cmath>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <numbers>
#include <thread>
#include <unistd.h>

namespace support {
namespace {

namespace fs = std::filesystem;

TEST(TestEnvironment, KeepsEveryFolderOfTheProgramInsideItsOwn) {
    const char* const home = std::getenv("HOME");
    ASSERT_NE(home, nullptr);
    for (const char* variable :
         {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR",
          "TMPDIR", "TONVALE_SOCKET_DIR", "TONVALE_LOCAL_LIBRARY"}) {
        const char* const folder = std::getenv(variable);
        ASSERT_NE(folder, nullptr) << variable;
        EXPECT_EQ(fs::path(folder).parent_path(), home) << variable;
        EXPECT_EQ(fs::status(folder).permissions(), fs::perms::owner_all) << variable;
    }
    EXPECT_EQ(std::getenv("DBUS_SESSION_BUS_ADDRESS"), nullptr);
}

TEST(ChildProcess, BeginsWithDefaultSignalsAndOnlyTheStandardDescriptors) {
    const PrivateFolder folder;
    const auto previous = std::signal(SIGTERM, SIG_IGN);
    const int leaked =
        ::open((folder.path() / "leaked").c_str(), O_CREAT, 0600); // not close-on-exec
    const auto result = runCommand({"sh", "-c", "readlink /proc/$$/fd/*; kill -TERM $$; echo on"});
    ::close(leaked);
    std::signal(SIGTERM, previous);
    EXPECT_EQ(result.status, 128 + SIGTERM);
    EXPECT_EQ(result.output.substr(0, 10), "/dev/null\n");
    EXPECT_EQ(result.output.find("leaked"), std::string::npos) << result.output;
}

TEST(ChildProcess, DiesWithTheThreadThatStartedIt) {
    std::unique_ptr<ChildProcess> child;
    std::thread([&] {
        child = std::make_unique<ChildProcess>(std::vector<std::string>{"sleep", "1000"});
    }).join();
    EXPECT_EQ(child->wait(), 128 + SIGKILL);
}

TEST(ToneAmplitude, IsTheLinearPeakOfTheToneAskedFor) {
    constexpr unsigned rate = 48000;
    struct Case {
        double frequency;
        double peak;
    };
    for (const auto& [frequency, peak] : {Case{50, 0.3}, {440, 1.0}, {997.3, 0.5}, {15000, 0.01}}) {
        std::vector<float> samples;
        for (int i = 0; i < 10000; ++i) {
            const double turns = 2 * std::numbers::pi * i / rate;
            samples.push_back(static_cast<float>(peak * std::sin(frequency * turns + 0.7) +
                                                 0.2 * std::cos(5000 * turns)));
        }
        EXPECT_NEAR(toneAmplitude(samples, frequency, rate), peak, peak / 100) << frequency;
        EXPECT_NEAR(toneAmplitude(samples, 5000, rate), 0.2, 0.002);
        EXPECT_LT(toneAmplitude(samples, 7000, rate), 0.001);
    }
    EXPECT_EQ(toneAmplitude({}, 440, rate), 0);
}

} // namespace
} // namespace support
