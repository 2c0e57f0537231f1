#include "platform/processes/ThreadStates.h"

#include <charconv>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <unistd.h>

namespace platform {

namespace {

std::string contentOf(const std::filesystem::path& file) {
    std::ifstream stream(file);
    std::string text{std::istreambuf_iterator<char>(stream), {}};
    while (!text.empty() && (text.back() == '\n' || text.back() == '\0'))
        text.pop_back();
    return text;
}

std::string lineOf(const std::filesystem::path& thread) {
    const std::string facts = contentOf(thread / "stat");
    const std::size_t nameEnd = facts.rfind(')'); // the name may hold anything
    if (nameEnd == std::string::npos)
        return {};
    std::istringstream fields(facts.substr(nameEnd + 1));
    std::string state;
    std::string skipped;
    unsigned long long userTime = 0;
    unsigned long long systemTime = 0;
    fields >> state;
    constexpr int fieldsBeforeTimes = 10;
    for (int i = 0; i < fieldsBeforeTimes; ++i)
        fields >> skipped;
    fields >> userTime >> systemTime;
    const std::string place = contentOf(thread / "wchan");
    char line[256];
    std::snprintf(line, sizeof(line), "%-8s %-16s %s %9.2f s  %s\n", thread.filename().c_str(),
                  contentOf(thread / "comm").c_str(), state.c_str(),
                  static_cast<double>(userTime + systemTime) /
                      static_cast<double>(::sysconf(_SC_CLK_TCK)),
                  place.empty() || place == "0" ? "-" : place.c_str());
    return line;
}

} // namespace

std::string threadStates(pid_t process) {
    std::string lines;
    std::error_code error;
    const std::filesystem::path folder = "/proc/" + std::to_string(process) + "/task";
    for (auto thread = std::filesystem::directory_iterator(folder, error);
         !error && thread != std::filesystem::directory_iterator(); thread.increment(error))
        lines += lineOf(thread->path());
    return lines;
}

} // namespace platform
