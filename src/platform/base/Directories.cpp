#include "platform/base/Directories.h"

#include <cerrno>
#include <cstdlib>
#include <pwd.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace platform {

namespace {

/// Empty unless the variable holds an absolute path.
std::string absoluteVariable(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr && *value == '/' ? value : "";
}

std::string homeOfUserEntry() {
    constexpr std::size_t firstSize = 1024;
    constexpr std::size_t largestSize = 1024 * firstSize;
    for (std::size_t size = firstSize; size <= largestSize; size *= 2) {
        std::vector<char> buffer(size);
        passwd entry{};
        passwd* found = nullptr;
        const int error = ::getpwuid_r(::getuid(), &entry, buffer.data(), size, &found);
        if (error != ERANGE)
            return found != nullptr && found->pw_dir != nullptr ? found->pw_dir : "";
    }
    return {};
}

std::string folderInHome(std::string_view inHome) {
    std::string home = homeDirectory();
    return !home.empty() ? home.append(inHome) : home;
}

std::string baseDirectory(const char* variable, std::string_view inHome) {
    std::string folder = absoluteVariable(variable);
    return !folder.empty() ? folder : folderInHome(inHome);
}

bool isDirectory(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0)
        return false;
    errno = ENOTDIR;
    return S_ISDIR(status.st_mode);
}

/// The mode again where the umask has taken from it; the group that a folder hands down stays.
bool giveMode(const std::string& path, mode_t mode) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 &&
           ((status.st_mode & mode) == mode ||
            ::chmod(path.c_str(), mode | (status.st_mode & S_ISGID)) == 0);
}

bool makeDirectory(const std::string& path, mode_t mode) {
    if (isDirectory(path))
        return true;
    if (errno != ENOENT)
        return false;
    if (::mkdir(path.c_str(), mode) == 0)
        return giveMode(path, mode);
    return errno == EEXIST && isDirectory(path); // another process created it meanwhile
}

} // namespace

std::string homeDirectory() {
    std::string home = absoluteVariable("HOME");
    return !home.empty() ? home : homeOfUserEntry();
}

std::string applicationSupportDirectory(Domain domain) {
    if (domain == Domain::user)
        return baseDirectory("XDG_DATA_HOME", "/.local/share");
    std::string library = localLibraryDirectory();
    return !library.empty() ? library.append("/Application Support") : library;
}

std::string logsDirectory() {
    return baseDirectory("XDG_STATE_HOME", "/.local/state");
}

std::string preferencesDirectory() {
    return baseDirectory("XDG_CONFIG_HOME", "/.config");
}

std::string userLibraryDirectory() {
    return folderInHome("/Library");
}

std::string localLibraryDirectory() {
    const char* const moved = std::getenv("TONVALE_LOCAL_LIBRARY");
    return moved != nullptr && *moved != '\0' ? moved : builtInLocalLibraryDirectory();
}

std::string builtInLocalLibraryDirectory() {
    return TONVALE_LOCAL_LIBRARY;
}

std::string applicationsDirectory(Domain domain) {
    if (domain == Domain::user)
        return folderInHome("/Applications");
    const std::string moved = absoluteVariable("TONVALE_LOCAL_APPLICATIONS");
    return !moved.empty() ? moved : builtInLocalApplicationsDirectory();
}

std::string builtInLocalApplicationsDirectory() {
    return TONVALE_LOCAL_APPLICATIONS;
}

std::string runtimeDirectory() {
    const char* const folder = std::getenv("XDG_RUNTIME_DIR");
    return folder != nullptr ? folder : "";
}

std::string temporaryDirectory() {
    const std::string folder = absoluteVariable("TMPDIR");
    return !folder.empty() ? folder : "/tmp";
}

std::string sharedTemporaryDirectory() {
    return "/var/tmp";
}

bool makeDirectories(const std::string& path, mode_t mode) {
    for (std::size_t end = path.find('/', 1); end != std::string::npos;
         end = path.find('/', end + 1)) {
        if (!makeDirectory(path.substr(0, end), mode))
            return false;
    }
    return makeDirectory(path, mode);
}

} // namespace platform
