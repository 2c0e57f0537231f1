#include "workspace/ApplicationScan.h"

#include "support/PlainProcesses.h"
#include "support/PrivateFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <unistd.h>

TEST(ApplicationScan, RecognisesAProgramByItsDisambiguatedName) {
    auto processes = std::make_unique<PlainProcesses>();
    auto& record = processes->records[100];
    record.pid = 100;
    record.startTime = 10;
    record.executable = "/home/ann/b/player";
    ApplicationScan scan({{}, {}, {record.user, ""}}, std::move(processes));
    const auto evidenceOf = [&scan](const char* name) {
        return scan.identify(100, name, "").evidence;
    };
    EXPECT_EQ(evidenceOf("player"), NameEvidence::fileName);
    EXPECT_EQ(evidenceOf("player (b)"), NameEvidence::fileName);
    EXPECT_EQ(evidenceOf("player (a)"), NameEvidence::clientName);
}

TEST(ApplicationScan, TakesThisProcessForItsApplicationEvenIfAToolOfThatWasThereBefore) {
    const support::PrivateFolder folder;
    const std::filesystem::path entries = folder.path() / "applications";
    const std::string mixer = folder.path() / "mixer/mixer";
    const std::string other = folder.path() / "other/other";
    std::filesystem::create_directory(entries);
    for (const std::string& program : {mixer, other}) {
        const std::filesystem::path path(program);
        std::filesystem::create_directory(path.parent_path());
        std::filesystem::copy_file("/bin/true", path);
        std::ofstream(entries / (path.filename().string() + ".desktop"))
            << "[Desktop Entry]\nType=Application\nName=The " << path.filename().string()
            << "\nExec=" << program << "\n";
    }
    const pid_t own = ::getpid();
    auto processes = std::make_unique<PlainProcesses>();
    const auto add = [&](pid_t pid, std::uint64_t start, const std::string& executable) {
        auto& record = processes->records[pid];
        record.pid = pid;
        record.startTime = start;
        record.user = ::geteuid();
        record.executable = executable;
    };
    add(own + 1, 10, folder.path() / "mixer/mixerctl");
    add(own, 20, mixer);
    add(own + 2, 30, other);
    ApplicationScan scan({{entries}, {}, {::geteuid(), ""}}, std::move(processes));
    const auto running = scan.running({});
    ASSERT_EQ(running.size(), 2U);
    EXPECT_EQ(running[0].name, "The mixer");
    EXPECT_EQ(running[0].mainProcess, own);
    EXPECT_EQ(running[0].mainStartTime, 20U);
    EXPECT_EQ(running[0].executable, mixer);
    EXPECT_EQ(running[1].mainProcess, own + 2);
}
