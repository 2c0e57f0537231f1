#include "platform/processes/PersonalFacts.h"

#include "platform/base/Directories.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <pwd.h>
#include <string_view>
#include <unistd.h>

namespace platform {

namespace {

std::string firstLine(const std::filesystem::path& file) {
    std::string line;
    std::getline(std::ifstream(file), line);
    while (!line.empty() && (line.back() == ' ' || line.back() == '\n'))
        line.pop_back();
    return line;
}

void addLine(std::vector<std::string>& lines, const std::filesystem::path& file) {
    if (std::string line = firstLine(file); !line.empty())
        lines.push_back(std::move(line));
}

void addAccount(PersonalFacts& facts) {
    std::array<char, 16384> buffer;
    passwd entry{};
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 ||
        found == nullptr)
        return;
    facts.userName = entry.pw_name;
    const std::string_view information = entry.pw_gecos;
    facts.realName = information.substr(0, information.find(','));
}

void addSerialNumbers(PersonalFacts& facts, const std::string& root) {
    for (const char* const name :
         {"product_serial", "board_serial", "chassis_serial", "product_uuid"})
        addLine(facts.serialNumbers, root + "/sys/class/dmi/id/" + name);
    addLine(facts.serialNumbers, root + "/sys/firmware/devicetree/base/serial-number");
    std::error_code error;
    for (const char* const bus : {"/sys/bus/usb/devices", "/sys/class/block"}) {
        for (const auto& device : std::filesystem::directory_iterator(root + bus, error)) {
            addLine(facts.serialNumbers, device.path() / "serial");
            addLine(facts.serialNumbers, device.path() / "device/serial");
        }
    }
}

} // namespace

PersonalFacts PersonalFacts::ofThisMachine(const std::string& root) {
    PersonalFacts facts;
    facts.home = homeDirectory();
    addAccount(facts);
    facts.hostName = firstLine(root + "/proc/sys/kernel/hostname");
    addLine(facts.machineIds, root + "/etc/machine-id");
    addLine(facts.machineIds, root + "/proc/sys/kernel/random/boot_id");
    addSerialNumbers(facts, root);
    return facts;
}

} // namespace platform
