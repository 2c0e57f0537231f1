#include "platform/processes/SystemFacts.h"

#include "platform/base/SystemValue.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <fstream>
#include <sched.h>
#include <set>
#include <string_view>
#include <strings.h>
#include <sys/utsname.h>
#include <vector>

namespace platform {

namespace {

/// Takes the quotes and backslashes away that a shell would.
std::string unquoted(std::string_view text) {
    std::string result;
    char quote = '\0';
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char character = text[i];
        if (character == quote)
            quote = '\0';
        else if (quote == '\0' && (character == '"' || character == '\''))
            quote = character;
        else if (character == '\\' && quote != '\'' && i + 1 < text.size())
            result += text[++i];
        else
            result += character;
    }
    return result;
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks(" \t\n\r\0", 5);
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/// Empty when the file cannot be read.
std::string firstLine(const std::string& path) {
    std::string line;
    std::getline(std::ifstream(path), line);
    return std::string(trimmed(line));
}

/// The number that the text begins with, 0 when there is none.
template <typename Number>
Number leadingNumber(std::string_view text) {
    Number number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

/// What stands behind the colon in each line "key : value" of a file in /proc.
std::vector<std::string> valuesOf(std::string_view key, const std::string& path) {
    std::vector<std::string> values;
    std::ifstream stream(path);
    for (std::string line; std::getline(stream, line);) {
        const std::string_view whole = line;
        const std::size_t colon = whole.find(':');
        if (colon != std::string_view::npos && trimmed(whole.substr(0, colon)) == key)
            values.emplace_back(trimmed(whole.substr(colon + 1)));
    }
    return values;
}

/// The numbers of a list such as "0-3,8".
std::vector<unsigned> processorsOf(std::string_view list) {
    constexpr unsigned mostProcessors = 1U << 16U;
    std::vector<unsigned> processors;
    while (!list.empty()) {
        const std::string_view range = list.substr(0, list.find(','));
        list.remove_prefix(std::min(range.size() + 1, list.size()));
        const std::size_t dash = range.find('-');
        const auto first = leadingNumber<unsigned>(range);
        const auto last = dash == std::string_view::npos
                              ? first
                              : leadingNumber<unsigned>(range.substr(dash + 1));
        for (unsigned i = first; i <= last && i < mostProcessors; ++i)
            processors.push_back(i);
    }
    return processors;
}

std::vector<unsigned> processorsInUse(const std::string& root) {
    auto processors = processorsOf(firstLine(root + "/sys/devices/system/cpu/online"));
    if (processors.empty()) {
        for (const std::string& number : valuesOf("processor", root + "/proc/cpuinfo"))
            processors.push_back(leadingNumber<unsigned>(number));
    }
    return processors;
}

std::string processorFile(const std::string& root, unsigned processor, std::string_view file) {
    return (root + "/sys/devices/system/cpu/cpu").append(std::to_string(processor)).append(file);
}

bool isPlaceholder(const std::string& text) {
    constexpr std::array placeholders{
        "",
        "0123456789",
        "123456789",
        "All Series",
        "Default",
        "Default string",
        "Empty",
        "INVALID",
        "N/A",
        "None",
        "Not Applicable",
        "Not Available",
        "Not Specified",
        "OEM",
        "O.E.M.",
        "Product Name",
        "System Name",
        "System Product Name",
        "System Version",
        "To be filled by O.E.M",
        "To Be Filled By O.E.M.",
        "Type1ProductConfigId",
        "Undefined",
        "Unknown",
        "x.x",
    };
    return std::any_of(placeholders.begin(), placeholders.end(), [&](const char* placeholder) {
        return ::strcasecmp(placeholder, text.c_str()) == 0;
    });
}

/// A version is part of the name only where the maker has put words into it.
bool hasWord(std::string_view text) {
    const auto isLetter = [](unsigned char character) { return std::isalpha(character) != 0; };
    return std::adjacent_find(text.begin(), text.end(), [&](char one, char next) {
               return isLetter(static_cast<unsigned char>(one)) &&
                      isLetter(static_cast<unsigned char>(next));
           }) != text.end();
}

std::string firmwareModelName(const std::string& root) {
    const std::string folder = root + "/sys/class/dmi/id";
    std::string name = firstLine(folder + "/product_name");
    if (isPlaceholder(name))
        name.clear();
    const std::string version = firstLine(folder + "/product_version");
    if (isPlaceholder(version) || !hasWord(version) || name.find(version) != std::string::npos)
        return name;
    return name.empty() ? version : name + " " + version;
}

} // namespace

std::string productVersion() {
    constexpr std::string_view key = "VERSION_ID=";
    for (const char* const file : {"/etc/os-release", "/usr/lib/os-release"}) {
        std::ifstream stream(file);
        for (std::string line; std::getline(stream, line);) {
            if (line.starts_with(key))
                return unquoted(std::string_view(line).substr(key.size()));
        }
        if (stream.is_open())
            break; // the second stands in for a missing first one
    }
    return {};
}

std::string productBuild() {
    utsname facts{};
    return ::uname(&facts) == 0 ? facts.release : "";
}

unsigned physicalProcessorCount(const std::string& root) {
    std::set<std::string> cores;
    for (const unsigned processor : processorsInUse(root)) {
        std::string core = firstLine(processorFile(root, processor, "/topology/core_cpus_list"));
        if (core.empty()) // the name before Linux 5.3
            core = firstLine(processorFile(root, processor, "/topology/thread_siblings_list"));
        cores.insert(!core.empty() ? core : std::to_string(processor));
    }
    return std::max(1U, static_cast<unsigned>(cores.size()));
}

unsigned availableProcessorCount(const std::string& root) {
    return std::max(1U, static_cast<unsigned>(processorsInUse(root).size()));
}

unsigned activeProcessorCount() {
    // The kernel refuses a set that is smaller than its own.
    constexpr unsigned mostProcessors = 1U << 16U;
    for (unsigned count = CPU_SETSIZE; count <= mostProcessors; count *= 2) {
        std::vector<cpu_set_t> set(count / CPU_SETSIZE);
        const std::size_t bytes = set.size() * sizeof(cpu_set_t);
        if (::sched_getaffinity(0, bytes, set.data()) == 0)
            return std::max(1U, static_cast<unsigned>(CPU_COUNT_S(bytes, set.data())));
    }
    return availableProcessorCount();
}

std::uint64_t processorFrequency(const std::string& root) {
    constexpr std::uint64_t kilohertz = 1000;
    constexpr double megahertz = 1e6;
    std::uint64_t highest = 0;
    for (const unsigned processor : processorsInUse(root)) {
        const auto most = firstLine(processorFile(root, processor, "/cpufreq/cpuinfo_max_freq"));
        highest = std::max(highest, leadingNumber<std::uint64_t>(most) * kilohertz);
    }
    if (highest != 0)
        return highest;
    double fastest = 0;
    for (const std::string& value : valuesOf("cpu MHz", root + "/proc/cpuinfo"))
        fastest = std::max(fastest, leadingNumber<double>(value));
    return static_cast<std::uint64_t>(std::llround(fastest * megahertz));
}

std::uint64_t physicalMemory(const std::string& root) {
    constexpr std::uint64_t kilobyte = 1024;
    const auto total = valuesOf("MemTotal", root + "/proc/meminfo");
    return total.empty() ? 0 : leadingNumber<std::uint64_t>(total.front()) * kilobyte;
}

std::string machineModelName(const std::string& root) {
    std::string name = firmwareModelName(root);
    return !name.empty() ? name : firstLine(root + "/sys/firmware/devicetree/base/model");
}

bool isSingleUserMode() {
    static const bool singleUser = [] {
        std::int32_t value = 0;
        return systemValue("kern.singleuser", &value, sizeof(value)) && value != 0;
    }();
    return singleUser;
}

} // namespace platform
