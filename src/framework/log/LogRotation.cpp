#include "framework/log/LogRotation.h"

#include <cstdio>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace QN::log {

namespace fs = std::filesystem;

namespace {

/// Absolute, links resolved; of a file that is not there, its folder's.
fs::path realPath(const fs::path& path) {
    std::error_code error;
    fs::path whole = fs::canonical(path, error);
    if (!error)
        return whole;
    const fs::path absolute = fs::absolute(path, error);
    const fs::path folder = fs::canonical(absolute.parent_path(), error);
    return error ? absolute : folder / absolute.filename();
}

void moveOn(const std::string& from, const std::string& to) {
    if (::rename(from.c_str(), to.c_str()) != 0)
        std::fprintf(stderr, "Can't rename %s to %s\n", from.c_str(), to.c_str());
}

} // namespace

bool fileExists(const std::string& path) noexcept {
    struct stat file {};
    return ::stat(path.c_str(), &file) == 0;
}

std::string rotatedFile(const std::string& path) {
    std::error_code ignored;
    return fs::is_symlink(path, ignored) ? realPath(path).string() : path;
}

std::string backupPath(const std::string& path, int index) {
    if (index < 0)
        return path;
    const fs::path original(path);
    const std::string name =
        original.stem().string() + std::to_string(index) + original.extension().string();
    return original.parent_path() / name;
}

void rotate(const std::string& path) {
    const std::string real = realPath(path);
    for (int index = lastBackup; index >= -1; --index) {
        const std::string file = backupPath(real, index);
        if (!fileExists(file))
            continue;
        if (index < lastBackup)
            moveOn(file, backupPath(real, index + 1));
        else if (::unlink(file.c_str()) != 0)
            std::fprintf(stderr, "Can't unlink %s\n", file.c_str());
    }
}

} // namespace QN::log
