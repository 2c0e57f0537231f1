#include "tninstaller/DirectoryReader.h"

#include <string_view>

DirectoryReader::DirectoryReader(platform::FileDescriptor folder, const std::string& path,
                                 InstallCode code)
    : stream_(::fdopendir(folder.get())), path_(path), code_(code) {
    if (stream_ == nullptr)
        throw failureAt(path, code);
    folder.release();
}

const char* DirectoryReader::next() {
    errno = 0;
    while (const dirent* const entry = ::readdir(stream_.get())) {
        const std::string_view name(entry->d_name);
        if (name != "." && name != "..")
            return entry->d_name;
        errno = 0;
    }
    if (errno != 0)
        throw failureAt(path_, code_);
    return nullptr;
}
