#include "naming/ProgramFiles.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr std::array<const char*, 7> usualFolders{"/usr/local/bin",   "/usr/bin",   "/bin",
                                                  "/usr/local/games", "/usr/games", "/snap/bin",
                                                  "/usr/sbin"};

constexpr std::array<const char*, 2> foldersInHome{"/.local/bin", "/bin"};

std::vector<std::string> defaultSearchPath() {
    std::vector<std::string> folders;
    const auto add = [&folders](std::string folder) {
        if (folder.starts_with('/') && std::ranges::find(folders, folder) == folders.end())
            folders.push_back(std::move(folder));
    };
    const char* const variable = std::getenv("PATH");
    std::string_view rest = variable != nullptr ? variable : "";
    while (!rest.empty()) {
        const std::string_view folder = rest.substr(0, rest.find(':'));
        add(std::string(folder));
        rest.remove_prefix(std::min(folder.size() + 1, rest.size()));
    }
    for (const char* const folder : usualFolders)
        add(folder);
    if (const char* const home = std::getenv("HOME")) {
        for (const char* const folder : foldersInHome)
            add(std::string(home).append(folder));
    }
    return folders;
}

} // namespace

ProgramFiles::ProgramFiles() : ProgramFiles(defaultSearchPath()) {}

ProgramFiles::ProgramFiles(std::vector<std::string> searchPath)
    : searchPath_(std::move(searchPath)) {}

std::string ProgramFiles::find(const std::string& word) const {
    if (word.empty())
        return {};
    if (word.find('/') != std::string::npos)
        return word.starts_with('/') && isExecutable(word) ? word : std::string();
    for (const std::string& folder : searchPath_) {
        std::string path = std::string(folder).append("/").append(word);
        if (isExecutable(path))
            return path;
    }
    return {};
}

bool ProgramFiles::isLinkTo(const std::string& name, const std::string& executable) const {
    const auto leadsThere = [&](const std::string& path) {
        return path != executable && isExecutable(path) && resolved(path) == executable;
    };
    const std::size_t slash = executable.rfind('/');
    return !name.empty() && slash != std::string::npos &&
           (leadsThere(find(name)) || leadsThere(executable.substr(0, slash + 1) + name));
}

bool ProgramFiles::isExecutable(const std::string& path) const {
    struct stat status {};
    return ::access(path.c_str(), X_OK) == 0 && ::stat(path.c_str(), &status) == 0 &&
           S_ISREG(status.st_mode);
}

std::string ProgramFiles::resolved(const std::string& path) const {
    std::error_code error;
    const auto found = std::filesystem::canonical(path, error);
    return error ? path : found.string();
}

bool ProgramFiles::isScript(const std::string& path) const {
    std::array<char, 2> beginning{};
    std::ifstream file(path, std::ios::binary);
    return file.read(beginning.data(), beginning.size()) && beginning[0] == '#' &&
           beginning[1] == '!';
}
