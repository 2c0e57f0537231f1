#include "support/ChildProcess.h"
#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr const char* unitName = "tonvale-plugin.service";

std::string contentOf(const fs::path& file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// The program that the unit starts.
std::string programOf(const std::string& unit) {
    const std::string key = "\nExecStart=\"";
    const std::size_t begin = unit.find(key) + key.size();
    return unit.substr(begin, unit.find('"', begin) - begin);
}

/// The file of that name somewhere below the folder.
fs::path find(const fs::path& folder, const std::string& name) {
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        if (entry.path().filename() == name && entry.path().parent_path().filename() == "user")
            return entry.path();
    }
    return {};
}

} // namespace

TEST(ServiceFile, IsUnderstoodBySystemdAndStartsWhatIsInstalled) {
    const support::PrivateFolder root;
    const support::ScopedVariable staging("DESTDIR", root.path().string());
    const auto installed =
        support::runCommand({CMAKE_PROGRAM, "--install", TONVALE_BUILD, "--component", "plugin"});
    ASSERT_EQ(installed.status, 0) << installed.output;
    const fs::path file = find(root.path(), unitName);
    ASSERT_FALSE(file.empty()) << installed.output;
    std::string unit = contentOf(file);
    EXPECT_EQ(unit, contentOf(TONVALE_SERVICE)) << "the bundle has the same";

    const std::string program = programOf(unit);
    const std::string staged = root.path().string() + program;
    EXPECT_EQ(::access(staged.c_str(), X_OK), 0) << staged;

    unit.replace(unit.find(program), program.size(), staged);
    std::ofstream(root.path() / unitName) << unit;
    const auto verified = support::runCommand(
        {"systemd-analyze", "--user", "verify", (root.path() / unitName).string()});
    EXPECT_EQ(verified.status, 0);
    EXPECT_EQ(verified.output, "") << "keys that systemd does not know are told here";
}
