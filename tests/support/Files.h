#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/stat.h>

namespace support {

/// All bytes of a file; none when it cannot be read.
inline std::string contentOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// The permissions of a file, 0 when there is none. Of a link's own.
inline mode_t modeOf(const std::filesystem::path& file) {
    struct stat status {};
    return ::lstat(file.c_str(), &status) == 0 ? status.st_mode & ALLPERMS : 0;
}

} // namespace support
