#include "platform/applications/ApplicationScan.h"
#include "support/PrivateFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <unistd.h>

using platform::ProcessRecord;

namespace {

class Processes final : public platform::ProcessView {
  public:
    void add(pid_t pid, std::uint64_t startTime, const std::string& executable) {
        ProcessRecord& record = records_[pid];
        record.pid = pid;
        record.startTime = startTime;
        record.user = ::geteuid();
        record.executable = executable;
    }

    std::optional<ProcessRecord> process(pid_t pid) const override {
        const auto found = records_.find(pid);
        return found != records_.end() ? std::optional(found->second) : std::nullopt;
    }
    std::vector<pid_t> processesOf(uid_t /*user*/) const override {
        std::vector<pid_t> pids;
        for (const auto& [pid, record] : records_)
            pids.push_back(pid);
        return pids;
    }

  private:
    std::map<pid_t, ProcessRecord> records_;
};

} // namespace

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
    auto processes = std::make_unique<Processes>();
    processes->add(own + 1, 10, folder.path() / "mixer/mixerctl");
    processes->add(own, 20, mixer);
    processes->add(own + 2, 30, other);
    platform::ApplicationScan scan({{entries}, {}, {::geteuid(), ""}}, std::move(processes));
    const auto running = scan.running({});
    ASSERT_EQ(running.size(), 2U);
    EXPECT_EQ(running[0].name, "The mixer");
    EXPECT_EQ(running[0].mainProcess, own);
    EXPECT_EQ(running[0].mainStartTime, 20U);
    EXPECT_EQ(running[0].executable, mixer);
    EXPECT_EQ(running[1].mainProcess, own + 2);
}
