#include "platform/processes/SystemFacts.h"

#include "support/PrivateFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string_view>

namespace {

/// The folder of another machine; at first it has neither /proc nor /sys.
class OtherMachine {
  public:
    std::string root() const { return folder_.path(); }

    void write(const std::string& file, std::string_view content) const {
        const auto path = folder_.path() / file;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path) << content;
    }

    void writeProcessor(unsigned number, const std::string& file, std::string_view content) const {
        write("sys/devices/system/cpu/cpu" + std::to_string(number) + "/" + file, content);
    }

  private:
    const support::PrivateFolder folder_;
};

} // namespace

TEST(SystemFacts, CountCoresAndTheProcessorsThatShareThem) {
    const OtherMachine machine;
    machine.write("sys/devices/system/cpu/online", "0-3,6,8\n");
    for (const auto& [number, siblings] :
         {std::pair(0U, "0,2\n"), std::pair(1U, "1,3\n"), std::pair(2U, "0,2\n"),
          std::pair(3U, "1,3\n"), std::pair(4U, "4\n")}) // the last is switched off
        machine.writeProcessor(number, "topology/core_cpus_list", siblings);
    for (const unsigned number : {6U, 8U})
        machine.writeProcessor(number, "topology/thread_siblings_list", "6,8\n");
    EXPECT_EQ(platform::availableProcessorCount(machine.root()), 6U);
    EXPECT_EQ(platform::physicalProcessorCount(machine.root()), 3U);
}

TEST(SystemFacts, CountProcessorsWithoutSysfs) {
    const OtherMachine machine;
    EXPECT_EQ(platform::availableProcessorCount(machine.root()), 1U);
    EXPECT_EQ(platform::physicalProcessorCount(machine.root()), 1U);
    machine.write("proc/cpuinfo", "processor\t: 0\nmodel name\t: A\n\nprocessor\t: 1\n");
    EXPECT_EQ(platform::availableProcessorCount(machine.root()), 2U);
    EXPECT_EQ(platform::physicalProcessorCount(machine.root()), 2U);
}

TEST(SystemFacts, SurviveADamagedListOfProcessors) {
    const OtherMachine machine;
    for (const char* const list : {",", "-", "3-1", "x", "0-4294967295,,"}) {
        machine.write("sys/devices/system/cpu/online", list);
        EXPECT_GE(platform::availableProcessorCount(machine.root()), 1U) << list;
    }
}

TEST(SystemFacts, TellTheFrequencyThatTheFastestProcessorCanReach) {
    const OtherMachine machine;
    EXPECT_EQ(platform::processorFrequency(machine.root()), 0U);
    machine.write("proc/cpuinfo", "processor\t: 0\ncpu MHz\t\t: 2596.138\n\n"
                                  "processor\t: 1\ncpu MHz\t\t: 1200.000\n");
    EXPECT_EQ(platform::processorFrequency(machine.root()), 2'596'138'000U);
    machine.write("sys/devices/system/cpu/online", "0-1");
    machine.writeProcessor(0, "cpufreq/cpuinfo_max_freq", "1800000\n");
    machine.writeProcessor(1, "cpufreq/cpuinfo_max_freq", "5100000\n");
    EXPECT_EQ(platform::processorFrequency(machine.root()), 5'100'000'000U);
}

TEST(SystemFacts, TellTheMemoryInBytes) {
    const OtherMachine machine;
    EXPECT_EQ(platform::physicalMemory(machine.root()), 0U);
    machine.write("proc/meminfo", "MemFree:  1 kB\nMemTotal:       24684084 kB\nSwapTotal: 2 kB\n");
    EXPECT_EQ(platform::physicalMemory(machine.root()), 25'276'502'016U);
    EXPECT_GT(platform::physicalMemory(), 0U);
}

TEST(SystemFacts, NameTheModelWithoutWhatFirmwareMakersLeave) {
    struct Case {
        const char* name;
        const char* version;
        const char* expected;
    };
    const OtherMachine machine;
    for (const auto& [name, version, expected] : {
             Case{"20HRCTO1WW\n", "ThinkPad X1 Carbon 5th\n", "20HRCTO1WW ThinkPad X1 Carbon 5th"},
             Case{"XPS 13 9310\n", "1.0\n", "XPS 13 9310"},
             Case{"Surface Pro\n", "Surface Pro\n", "Surface Pro"},
             Case{"System Product Name\n", "System Version\n", ""},
             Case{"To be filled by O.E.M.  \n", "Custom Build\n", "Custom Build"},
             Case{"\n", "\n", ""},
         }) {
        machine.write("sys/class/dmi/id/product_name", name);
        machine.write("sys/class/dmi/id/product_version", version);
        EXPECT_EQ(platform::machineModelName(machine.root()), expected);
    }
    machine.write("sys/firmware/devicetree/base/model",
                  std::string_view("Raspberry Pi 4 Model B Rev 1.4\0", 31));
    EXPECT_EQ(platform::machineModelName(machine.root()), "Raspberry Pi 4 Model B Rev 1.4");
}
