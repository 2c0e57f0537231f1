#include "platform/files/SetAside.h"

#include "platform/base/Directories.h"
#include "platform/base/FileDescriptor.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace fs = std::filesystem;

namespace {

constexpr int mostNumbers = 10000;

fs::path userTrash() {
    const fs::path data = applicationSupportDirectory(Domain::user);
    return data.empty() ? fs::path() : data / "Trash";
}

/// "Name.app", "Name 2.app", "Name 3.app"
std::string numbered(const fs::path& name, int number) {
    if (number == 1)
        return name;
    return std::string(name.stem())
        .append(" ")
        .append(std::to_string(number))
        .append(std::string(name.extension()));
}

/// As in an address, with the slashes kept.
std::string percentEncoded(const std::string& path) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    constexpr std::string_view plain = "/-_.~";
    std::string encoded;
    for (const char each : path) {
        const auto byte = static_cast<unsigned char>(each);
        const bool isPlain = (each >= 'a' && each <= 'z') || (each >= 'A' && each <= 'Z') ||
                             (each >= '0' && each <= '9') ||
                             plain.find(each) != std::string_view::npos;
        if (isPlain)
            encoded += each;
        else
            encoded.append("%").append(1, digits[byte >> 4U]).append(1, digits[byte & 0xFU]);
    }
    return encoded;
}

std::string informationOn(const fs::path& path) {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    std::array<char, 32> date{};
    ::localtime_r(&now, &local);
    std::strftime(date.data(), date.size(), "%Y-%m-%dT%H:%M:%S", &local);
    return std::string("[Trash Info]\nPath=")
        .append(percentEncoded(path))
        .append("\nDeletionDate=")
        .append(date.data())
        .append("\n");
}

/// False with errno set: EEXIST if the name is taken.
bool writeNew(const fs::path& file, const std::string& text) {
    constexpr mode_t ownOnly = 0600;
    const FileDescriptor made(
        ::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, ownOnly));
    if (!made)
        return false;
    const ssize_t written = ::write(made.get(), text.data(), text.size());
    if (written == static_cast<ssize_t>(text.size()))
        return true;
    const int error = written < 0 ? errno : ENOSPC;
    ::unlink(file.c_str());
    errno = error;
    return false;
}

bool isVolumeTrash(const std::string& name) {
    constexpr std::string_view start = ".Trash-";
    return name == ".Trash" || (name.starts_with(start) && name.size() > start.size() &&
                                std::all_of(name.begin() + start.size(), name.end(),
                                            [](char each) { return each >= '0' && each <= '9'; }));
}

} // namespace

bool renameToFreePlace(const fs::path& from, const fs::path& to) noexcept {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
        return true;
    if (errno != EINVAL) // this file system cannot do both in one step
        return false;
    struct stat status {};
    if (::lstat(to.c_str(), &status) == 0) {
        errno = EEXIST;
        return false;
    }
    return ::rename(from.c_str(), to.c_str()) == 0;
}

std::optional<SetAside> SetAside::toTrash(const fs::path& path) {
    constexpr mode_t ownOnly = 0700;
    const fs::path trash = userTrash();
    if (trash.empty()) {
        errno = ENOENT;
        return std::nullopt;
    }
    if (!makeDirectories(trash / "files", ownOnly) || !makeDirectories(trash / "info", ownOnly))
        return std::nullopt;
    const std::string text = informationOn(path);
    for (int number = 1; number <= mostNumbers; ++number) {
        const std::string name = numbered(path.filename(), number);
        fs::path information = trash / "info" / std::string(name).append(".trashinfo");
        if (!writeNew(information, text)) {
            if (errno != EEXIST)
                return std::nullopt;
            continue;
        }
        fs::path place = trash / "files" / name;
        if (renameToFreePlace(path, place))
            return SetAside(path, std::move(place), std::move(information));
        const int error = errno;
        ::unlink(information.c_str());
        errno = error;
        if (error != EEXIST)
            return std::nullopt;
    }
    return std::nullopt;
}

std::optional<SetAside> SetAside::beside(const fs::path& path) {
    for (int number = 2; number <= mostNumbers; ++number) {
        fs::path place = path.parent_path() / numbered(path.filename(), number);
        if (renameToFreePlace(path, place))
            return SetAside(path, std::move(place), {});
        if (errno != EEXIST)
            return std::nullopt;
    }
    return std::nullopt;
}

std::optional<SetAside> SetAside::anywhere(const fs::path& path) {
    auto moved = toTrash(path);
    return moved ? std::move(moved) : beside(path);
}

bool SetAside::putBack() const noexcept {
    if (!renameToFreePlace(place_, from_))
        return false;
    if (!information_.empty())
        ::unlink(information_.c_str());
    return true;
}

bool isInTrash(const fs::path& path) {
    const fs::path own = userTrash();
    const std::string below = own.empty() ? std::string() : std::string(own).append("/");
    if (!below.empty() && path.native().starts_with(below))
        return true;
    const fs::path folder = path.parent_path();
    return std::any_of(folder.begin(), folder.end(),
                       [](const fs::path& each) { return isVolumeTrash(each); }) ||
           std::string(folder).append("/").find("/.Trashes/") != std::string::npos;
}

} // namespace platform
