#include "platform/processes/MachineFacts.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <string_view>

namespace platform {

namespace {

std::string firstLine(const std::filesystem::path& file) {
    std::string line;
    std::getline(std::ifstream(file), line);
    return line;
}

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t");
    return first == std::string_view::npos
               ? std::string_view()
               : text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

/// The value of the first line "key<separator>value" in a file.
std::string valueIn(const std::string& file, std::string_view key, char separator) {
    std::ifstream stream(file);
    for (std::string line; std::getline(stream, line);) {
        const std::string_view whole = line;
        const std::size_t place = whole.find(separator);
        if (place != std::string_view::npos && trimmed(whole.substr(0, place)) == key)
            return std::string(trimmed(whole.substr(place + 1)));
    }
    return {};
}

/// "0x8086" without its prefix.
std::string digitsIn(const std::filesystem::path& file) {
    const std::string line = firstLine(file);
    return line.starts_with("0x") ? line.substr(2) : std::string();
}

/// The names of a device in the list of PCI numbers, which has the makers at the begin of lines and
/// their devices indented below.
std::string pciName(const std::string& root, const std::string& vendor, const std::string& device) {
    for (const char* const list : {"/usr/share/hwdata/pci.ids", "/usr/share/misc/pci.ids"}) {
        std::ifstream stream(root + list);
        std::string maker;
        for (std::string line; std::getline(stream, line);) {
            if (line.starts_with(vendor + "  "))
                maker = line.substr(vendor.size() + 2);
            else if (!maker.empty() && line.starts_with("\t" + device + "  "))
                return maker + " " + line.substr(device.size() + 3);
            else if (!maker.empty() && !line.empty() && line[0] != '\t' && line[0] != '#')
                return maker;
        }
    }
    return {};
}

} // namespace

std::string processorName(const std::string& root) {
    const std::string file = root + "/proc/cpuinfo";
    for (const char* const key : {"model name", "Model", "Hardware"}) {
        if (std::string name = valueIn(file, key, ':'); !name.empty())
            return name;
    }
    return {};
}

std::vector<std::string> graphicsCards(const std::string& root) {
    constexpr std::string_view displayClass = "03";
    std::vector<std::string> cards;
    std::error_code error;
    for (auto item = std::filesystem::directory_iterator(root + "/sys/bus/pci/devices", error);
         !error && item != std::filesystem::directory_iterator(); item.increment(error)) {
        if (!digitsIn(item->path() / "class").starts_with(displayClass))
            continue;
        const std::string vendor = digitsIn(item->path() / "vendor");
        const std::string device = digitsIn(item->path() / "device");
        std::string card = pciName(root, vendor, device);
        card.append(card.empty() ? "[" : " [").append(vendor).append(":").append(device);
        cards.push_back(card.append("]"));
    }
    std::sort(cards.begin(), cards.end());
    return cards;
}

std::vector<std::string> soundCards(const std::string& root) {
    std::vector<std::string> cards;
    std::ifstream stream(root + "/proc/asound/cards");
    for (std::string line; std::getline(stream, line);) {
        const std::size_t dash = line.find(" - ");
        if (dash != std::string::npos && line.find(']') < dash)
            cards.push_back(line.substr(dash + 3));
    }
    return cards;
}

std::string distributionName(const std::string& root) {
    std::string name = valueIn(root + "/etc/os-release", "PRETTY_NAME", '=');
    std::erase(name, '"');
    return name;
}

std::optional<std::chrono::sys_seconds> bootTime(const std::string& root) {
    std::ifstream stream(root + "/proc/stat");
    std::string key;
    for (std::string line; std::getline(stream, line);) {
        constexpr std::string_view begin = "btime ";
        long long seconds = 0;
        if (line.starts_with(begin) &&
            std::from_chars(line.data() + begin.size(), line.data() + line.size(), seconds).ec ==
                std::errc{})
            return std::chrono::sys_seconds(std::chrono::seconds(seconds));
    }
    return std::nullopt;
}

std::string systemLogFile(const std::string& root) {
    for (const char* const file : {"/var/log/syslog", "/var/log/messages", "/var/log/system.log"}) {
        if (std::error_code error; std::filesystem::is_regular_file(root + file, error))
            return root + file;
    }
    return {};
}

} // namespace platform
