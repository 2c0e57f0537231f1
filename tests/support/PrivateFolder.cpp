#include "support/PrivateFolder.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

namespace support {

PrivateFolder::PrivateFolder() {
    const char* const parent = std::getenv("TMPDIR");
    // A short name: socket names that lie in the folder may have 107 bytes.
    std::string name = std::string(parent && *parent ? parent : "/tmp") + "/tv-XXXXXX";
    if (!::mkdtemp(name.data()))
        throw std::system_error(errno, std::generic_category(), name);
    path_ = name;
}

PrivateFolder::~PrivateFolder() {
    // A test may have taken rights away to provoke a failure.
    std::error_code ignored;
    const auto options = std::filesystem::directory_options::skip_permission_denied;
    std::filesystem::recursive_directory_iterator entry(path_, options, ignored);
    for (; !ignored && entry != std::filesystem::end(entry); entry.increment(ignored)) {
        if (entry->is_directory(ignored) && !entry->is_symlink(ignored))
            std::filesystem::permissions(entry->path(), std::filesystem::perms::owner_all, ignored);
    }
    std::filesystem::remove_all(path_, ignored);
}

} // namespace support
