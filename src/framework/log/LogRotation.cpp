#include "framework/log/LogRotation.h"

#include <cstdio>
#include <filesystem>
#include <unistd.h>

namespace QN::log {

namespace fs = std::filesystem;

namespace {

/// Absolute, links resolved; of a file that is not there, its folder's.
fs::path realPath(const fs::path& path) {
    std::error_code error;
    const fs::path whole = fs::canonical(path, error);
    if (!error)
        return whole;
    const fs::path absolute = fs::absolute(path, error);
    const fs::path folder = fs::canonical(absolute.parent_path(), error);
    return error ? absolute : folder / absolute.filename();
}

bool exists(const std::string& path) {
    std::error_code ignored;
    return fs::symlink_status(path, ignored).type() > fs::file_type::not_found;
}

void moveOn(const std::string& from, const std::string& to) {
    if (::rename(from.c_str(), to.c_str()) != 0)
        std::fprintf(stderr, "Can't rename %s to %s\n", from.c_str(), to.c_str());
}

} // namespace

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
        if (!exists(file))
            continue;
        if (index < lastBackup)
            moveOn(file, backupPath(real, index + 1));
        else if (::unlink(file.c_str()) != 0)
            std::fprintf(stderr, "Can't unlink %s\n", file.c_str());
    }
}

} // namespace QN::log
