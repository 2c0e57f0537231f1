#include "platform/files/BackupExclusion.h"

#include "platform/base/FileDescriptor.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

constexpr std::string_view signature = "Signature: 8a477f597d28d172789f06886806bc55";
constexpr std::string_view explanation =
    "\n# This folder holds what can be made again: backups may pass it over.\n"
    "# See https://bford.info/cachedir/\n";

std::string tagFile(const std::string& folder) {
    return folder + "/CACHEDIR.TAG";
}

bool writeWhole(int file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(file, text.data(), text.size());
        if (written < 0 && errno != EINTR)
            return false;
        text.remove_prefix(written > 0 ? static_cast<std::size_t>(written) : 0);
    }
    return true;
}

} // namespace

bool isExcludedFromBackups(const std::string& folder) {
    // A link does not count; a pipe must not hold us up.
    const FileDescriptor file(
        ::open(tagFile(folder).c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    std::array<char, signature.size()> content{};
    return file &&
           ::read(file.get(), content.data(), content.size()) ==
               static_cast<ssize_t>(content.size()) &&
           std::string_view(content.data(), content.size()) == signature;
}

bool excludeFromBackups(const std::string& folder) {
    const std::string path = tagFile(folder);
    constexpr mode_t readableByAll = 0644;
    const FileDescriptor file(
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, readableByAll));
    if (!file) {
        const int error = errno;
        if (error == EEXIST && isExcludedFromBackups(folder))
            return true;
        errno = error;
        return false;
    }
    if (writeWhole(file.get(), std::string(signature).append(explanation)))
        return true;
    const int error = errno;
    ::unlink(path.c_str());
    errno = error;
    return false;
}

} // namespace platform
