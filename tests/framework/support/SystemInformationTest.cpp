#include "framework/support/QNSupportUtils.h"
#include "framework/support/QNSystemInformation.h"
#include "framework/support/SoundQuirks.h"

#include "platform/base/WallClock.h"
#include "platform/processes/MachineFacts.h"
#include "support/ChildProcess.h"
#include "support/Files.h"
#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <fstream>

namespace {

/// A machine and its tools, all in a folder.
class SystemInformation : public testing::Test {
  public:
    SystemInformation() { use({}); }
    ~SystemInformation() override { QNSupportUtils::setTools({}); }

  protected:
    /// No tool is there but those of `changes`.
    void use(const QNSupportUtils::Tools& changes) {
        const QNSupportUtils::Tools usual;
        QNSupportUtils::Tools tools = changes;
        tools.root = folder.path();
        for (std::string QNSupportUtils::Tools::*const tool :
             {&QNSupportUtils::Tools::journalctl, &QNSupportUtils::Tools::wpctl,
              &QNSupportUtils::Tools::pipewire, &QNSupportUtils::Tools::wireplumber,
              &QNSupportUtils::Tools::pwDump, &QNSupportUtils::Tools::lshw,
              &QNSupportUtils::Tools::systemctl, &QNSupportUtils::Tools::euStack,
              &QNSupportUtils::Tools::gdb}) {
            if (tools.*tool == usual.*tool)
                tools.*tool = "/nowhere";
        }
        tools.sampleTime = std::chrono::milliseconds(50);
        QNSupportUtils::setTools(tools);
    }

    /// A tool that is a script.
    std::string tool(const std::string& name, const std::string& script) const {
        std::string file = write(name, "#!/bin/sh\n" + script + "\n");
        std::filesystem::permissions(file, std::filesystem::perms::owner_all);
        return file;
    }
    std::string write(const std::string& name, const std::string& text) const {
        const std::filesystem::path file = folder.path() / name;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file) << text;
        return file;
    }
    std::string root() const { return folder.path(); }

    const support::PrivateFolder folder;
};

platform::WallClock::time_point someTime() noexcept {
    return platform::WallClock::time_point(std::chrono::seconds(1'700'003'720));
}

} // namespace

TEST_F(SystemInformation, TellsTheTimeSinceTheRestart) {
    const std::map<std::int64_t, QString> cases{{1, "1 minute"},
                                                {59, "1 minute"},
                                                {119, "1 minute"},
                                                {120, "2 minutes"},
                                                {3599, "59 minutes"},
                                                {3600, "1 hour"},
                                                {3659, "1 hour"},
                                                {3719, "1 hour"},
                                                {3720, "1 hour, 2 minutes"},
                                                {7199, "1 hour, 59 minutes"},
                                                {7200, "2 hours"},
                                                {7320, "2 hours, 2 minutes"},
                                                {86399, "23 hours, 59 minutes"},
                                                {86400, "1 day, 0:00"},
                                                {90000, "1 day, 1:00"},
                                                {172800, "2 days, 0:00"},
                                                {259200 + 36000 + 300, "3 days, 10:05"}};
    for (const auto& [seconds, text] : cases)
        EXPECT_EQ(QNSystemInformation::restartDescription(seconds), text + " since last restart");
    EXPECT_EQ(QNSystemInformation::restartDescription(0), "Unknown");
    write("proc/stat", "cpu 1 2\nbtime 1700000000\n");
    platform::WallClock::replaceSource(&someTime);
    EXPECT_EQ(QNSystemInformation::lastRestartDescription(root()),
              "1 hour, 2 minutes since last restart");
    platform::WallClock::replaceSource(nullptr);
    EXPECT_EQ(QNSystemInformation::lastRestartDescription("/nowhere"), "Unknown");
}

TEST_F(SystemInformation, DescribesTheMachine) {
    write("Info.plist", "<plist version=\"1.0\"><dict><key>CFBundleName</key><string>T</string>"
                        "<key>CFBundleShortVersionString</key><string>1.2</string>"
                        "<key>CFBundleVersion</key><string>34</string>"
                        "<key>QNBuildIdentifier</key><string>abc</string></dict></plist>");
    EXPECT_EQ(QNSupportUtils::bundleInfo(platform::Bundle(folder.path())),
              "Name = T\nCFBundleVersion = 34\nCFBundleShortVersion = 1.2\n"
              "QNBuildIdentifier = abc");
    EXPECT_EQ(QNSystemInformation::machineDescription(root()), "Macintosh");
    EXPECT_EQ(QNSystemInformation::cpuDescription(root()), "Intel 64-bit");
    EXPECT_TRUE(QNSystemInformation::graphicsDescriptions(root()).isEmpty());
    write("sys/class/dmi/id/product_name", "Latitude 7420\n");
    write("proc/cpuinfo", "processor : 0\nmodel name : Fast CPU\nprocessor : 1\n");
    write("sys/devices/system/cpu/online", "0-1\n");
    write("sys/devices/system/cpu/cpu0/cpufreq/cpuinfo_max_freq", "2800000\n");
    EXPECT_EQ(QNSystemInformation::machineDescription(root()), "Latitude 7420");
    EXPECT_EQ(QNSystemInformation::cpuDescription(root()), "Fast CPU 2.80 GHz, 2 cores");
    for (const char* const processor : {"0", "1"})
        write(std::string("sys/devices/system/cpu/cpu") + processor + "/topology/core_cpus_list",
              "0-1\n");
    EXPECT_EQ(QNSystemInformation::cpuDescription(root()), "Fast CPU 2.80 GHz, 1 cores, 2 threads");
    write("sys/bus/pci/devices/0000:00:02.0/class", "0x030000\n");
    write("sys/bus/pci/devices/0000:00:02.0/vendor", "0x8086\n");
    write("sys/bus/pci/devices/0000:00:02.0/device", "0x9a49\n");
    write("sys/bus/pci/devices/0000:00:1f.3/class", "0x040100\n");
    EXPECT_EQ(QNSystemInformation::graphicsDescriptions(root()), QStringList{"[8086:9a49]"});
    write("usr/share/misc/pci.ids",
          "# list\n8085  Other\n\t9a49  Wrong\n8086  Intel\n\t0001  One\n\t9a49  Graphics\n");
    EXPECT_EQ(QNSystemInformation::graphicsDescriptions(root()),
              QStringList{"Intel Graphics [8086:9a49]"});
}

TEST_F(SystemInformation, CountsMemory) {
    const QString keys =
        "pagesz free active inactive wired zero-fill reactivated pagein pageout faults cow-faults "
        "cache-look cache-hit purged purgeable speculative decompressed compressed swapin swapout "
        "c-store-compressed c-store-uncompressed throttled file-backed anonymous vm-total vm-used "
        "vm-pagesz vm-encrypt";
    write("proc/meminfo", "MemFree:  8192 kB\nSwapTotal: 4096 kB\nSwapFree: 1024 kB\n"
                          "Unevictable: 400 kB\nPageTables: 400 kB\n");
    write("proc/vmstat", "pgfault 77\npswpin 5\n");
    const auto counters = QNSystemInformation::memoryStatistics(root());
    QStringList found;
    for (const auto& counter : counters)
        found.append(QString::fromStdString(counter.first));
    EXPECT_EQ(found.join(' '), keys);
    std::map<std::string, std::uint64_t> values(counters.begin(), counters.end());
    const std::uint64_t page = values["pagesz"];
    EXPECT_GE(page, 4096U);
    EXPECT_EQ(values["free"], (8192U << 10U) / page);
    EXPECT_EQ(values["wired"], (800U << 10U) / page);
    EXPECT_EQ(values["faults"], 77U);
    EXPECT_EQ(values["swapin"], 5U);
    EXPECT_EQ(values["vm-used"], 3072U << 10U);
    EXPECT_EQ(values["cow-faults"], 0U);
}

TEST_F(SystemInformation, TheBriefProfileFitsAScreen) {
    write("etc/os-release", "PRETTY_NAME=\"Some Linux 1\"\n");
    write("proc/asound/cards", " 0 [PCH            ]: HDA-Intel - HDA Intel PCH\n   more\n");
    QNSupportUtils::Tools tools;
    tools.wpctl = tool("wpctl", "[ \"$1\" = status ] && echo the status");
    tools.pipewire = tool("pipewire", "echo pipewire; echo Linked with libpipewire 1.2.3");
    tools.pwDump = tool("pw-dump", R"(cat <<X
[{"id": 1, "type": "T", "info": {"props": {"media.class": "Audio/Device",
  "device.description": "Speakers"}, "params": {"Profile": [{"description": "Stereo"}]}}}]
X)");
    use(tools);
    const QString profile = QNSupportUtils::systemProfile(true).value();
    for (const char* const line :
         {"System         Some Linux 1\n", "PipeWire       1.2.3\n",
          "Sound cards    HDA Intel PCH\n", "Sound devices  Speakers: Stereo\n", "\nthe status\n"})
        EXPECT_TRUE(profile.contains(line)) << line << profile.toStdString();
    EXPECT_FALSE(profile.contains("WirePlumber"));
    EXPECT_LE(profile.count('\n'), 24);
    EXPECT_EQ(profile.count("\nKnown quirk    A stream can lock its volume"), 1);
}

TEST(SoundQuirks, AreThoseOfTheVersions) {
    const struct {
        const char* pipewire;
        const char* wireplumber;
        int quirks;
    } cases[] = {{"", "", 0},         {"0.3.67", "", 1}, {"0.3.68", "x", 0}, {"0.3.76", "", 1},
                 {"1.4.2", "0.6", 1}, {"", "0.3.9", 2},  {"", "0.4.13", 3},  {"", "0.5.0", 1},
                 {"", "0.5.14", 1},   {"", "0.5.15", 0}};
    for (const auto& one : cases)
        EXPECT_EQ(soundQuirks(one.pipewire, one.wireplumber).size(), one.quirks)
            << one.pipewire << ' ' << one.wireplumber;
}

TEST_F(SystemInformation, TheFullProfileIsXmlWithoutWhatIsPlayed) {
    QNSupportUtils::Tools tools;
    tools.lshw =
        tool("lshw", "echo '<?xml version=\"1.0\"?><list><node id=\"x\">a &amp; b</node>'");
    tools.pwDump = tool("pw-dump", R"(echo '[{"id": 7, "type": "T", "info": {"props":
        {"media.name": "My Song", "node.name": "a<b"}}}, {"id": 8}]')");
    tools.systemctl = tool("systemctl", "echo Id=pipewire.service");
    use(tools);
    const QString profile = QNSupportUtils::systemProfile(false).value();
    const std::string file = write("profile.xml", profile.toStdString());
    EXPECT_EQ(support::runCommand(
                  {"python3", "-c", "import sys, xml.dom.minidom as x; x.parse(sys.argv[1])", file})
                  .status,
              0);
    EXPECT_TRUE(profile.contains("<property name=\"node.name\">a&lt;b</property>"));
    EXPECT_TRUE(profile.contains("<node id=\"x\">a &amp; b</node>"));
    EXPECT_TRUE(profile.contains("Id=pipewire.service"));
    EXPECT_TRUE(profile.contains("<memory name=\"pagesz\">"));
    EXPECT_FALSE(profile.contains("Song"));
}

TEST_F(SystemInformation, ReadsTheJournalElseALogFile) {
    const QStringList names{"Tonvale", "tonvalectl"};
    EXPECT_EQ(QNSupportUtils::systemLogPath(), "");
    EXPECT_EQ(QNSupportUtils::systemLogForProcesses(names), std::nullopt);
    const std::string file = write("var/log/messages", "a tonvale line\nother\nTONVALECTL [1]\n");
    EXPECT_EQ(QNSupportUtils::systemLogPath().toStdString(), file);
    EXPECT_EQ(QNSupportUtils::systemLogForProcesses(names), "a tonvale line\nTONVALECTL [1]\n");
    QNSupportUtils::Tools tools;
    tools.journalctl = tool("journalctl", "echo \"$@\"; echo $LC_ALL");
    use(tools);
    const QString log = QNSupportUtils::systemLogForProcesses(names).value();
    EXPECT_TRUE(log.contains("_COMM=Tonvale + SYSLOG_IDENTIFIER=Tonvale"));
    EXPECT_TRUE(log.endsWith("C.UTF-8\n"));
    tools.journalctl = tool("journalctl", "yes a line of a journal | head -c 100000000; echo last");
    use(tools);
    const QString end = QNSupportUtils::systemLogForProcesses(names).value();
    EXPECT_EQ(end.size(), 2 << 20);
    EXPECT_TRUE(end.endsWith("last\n"));
}

TEST_F(SystemInformation, ToolsThatFailGiveNothing) {
    const struct {
        const char* what;
        const char* script;
    } cases[] = {{"fails", "echo no; exit 1"},
                 {"hangs", "echo no; sleep 100"},
                 {"hangs with a child", "sleep 100 & echo no; wait"},
                 {"dies", "kill -9 $$"},
                 {"writes for ever", "exec yes no"}};
    for (const auto& one : cases) {
        QNSupportUtils::Tools tools;
        tools.wpctl = tools.pwDump = tool("tool", one.script);
        tools.toolTime = std::chrono::milliseconds(300);
        use(tools);
        EXPECT_FALSE(QNSupportUtils::systemProfile(true)->contains("no\n")) << one.what;
    }
}

TEST_F(SystemInformation, SamplesProcesses) {
    EXPECT_EQ(QNSupportUtils::sampleProcess("no such program"), std::nullopt);
    const std::string program = root() + "/Sampled";
    std::filesystem::copy_file("/usr/bin/sleep", program);
    support::ChildProcess sampled({program, "1000"});
    ASSERT_TRUE(support::waitUntil([&] {
        return support::contentOf("/proc/" + std::to_string(sampled.pid()) + "/comm") ==
               "Sampled\n";
    }));
    const QString process = "Process " + QString::number(sampled.pid()) + "\n";

    QNSupportUtils::Tools tools;
    use(tools);
    const QString states = QNSupportUtils::sampleProcess("Sampled").value();
    EXPECT_TRUE(states.startsWith(process));
    EXPECT_EQ(states.count("Sampled"), 10) << states.toStdString();

    tools.euStack = tool("eu-stack", "echo stack $*; exit 1");
    use(tools);
    const QString stacks = QNSupportUtils::sampleProcess("Sampled").value();
    EXPECT_EQ(stacks.count("stack -p " + QString::number(sampled.pid())), 10);

    tools.euStack = tool("eu-stack", "exit 1");
    use(tools);
    EXPECT_EQ(QNSupportUtils::sampleProcess("Sampled")->count("Sampled"), 10);

    tools.euStack = tool("eu-stack", "sleep 100");
    tools.toolTime = std::chrono::seconds(1);
    use(tools);
    EXPECT_EQ(QNSupportUtils::sampleProcess("Sampled")->count("Sampled"), 10);

    tools.euStack = "/nowhere";
    tools.gdb = tool("gdb", "echo gdb");
    use(tools);
    EXPECT_EQ(QNSupportUtils::sampleProcess("Sampled"), process + "\ngdb\n");
    EXPECT_TRUE(QDir(QDir::tempPath()).entryList({"Sample*.txt"}).isEmpty());
}

TEST_F(SystemInformation, SamplesItself) {
    QNSupportUtils::Tools tools;
    tools.euStack = "/usr/bin/eu-stack";
    tools.root = "";
    tools.sampleTime = std::chrono::milliseconds(50);
    QNSupportUtils::setTools(tools);
    const auto sample = QNSupportUtils::sampleProcess("system_information_test");
    ASSERT_TRUE(sample);
    EXPECT_TRUE(sample->contains("system_informa") || sample->contains("SamplesItself"))
        << sample->toStdString();
}

TEST_F(SystemInformation, FindsCrashReports) {
    const support::ScopedVariable state("XDG_STATE_HOME", root() + "/state");
    const support::ScopedVariable library("TONVALE_LOCAL_LIBRARY", root() + "/library");
    const QStringList names{"Tonvale"};
    EXPECT_EQ(QNSupportUtils::crashReportsForProcesses(names), std::nullopt);
    const std::string one = write("state/Tonvale/DiagnosticReports/Tonvale_1.crash", "");
    const std::string two = write("library/Logs/DiagnosticReports/TonvalePlugin_1.crash", "");
    for (const char* const other : {".Tonvale.crash", "Tonvale.txt", "Other.crash"})
        write(std::string("state/Tonvale/DiagnosticReports/") + other, "");
    EXPECT_EQ(QNSupportUtils::crashReportsForProcesses(names),
              (QStringList{QString::fromStdString(one), QString::fromStdString(two)}));
    EXPECT_EQ(QNSupportUtils::crashReportsForProcesses({"Nobody"}), std::nullopt);
}
