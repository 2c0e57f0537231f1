#include "tninstaller/DirectoryReader.h"

#include <string_view>

DirectoryReader::DirectoryReader(platform::FileDescriptor folder, const std::string& path,
                                 InstallCode code)
    : stream_(::fdopendir(folder.get())) {
    if (stream_ == nullptr)
        throw failureAt(path, code);
    folder.release();
}

const char* DirectoryReader::next() noexcept {
    while (const dirent* const entry = ::readdir(stream_.get())) {
        const std::string_view name(entry->d_name);
        if (name != "." && name != "..")
            return entry->d_name;
    }
    return nullptr;
}
