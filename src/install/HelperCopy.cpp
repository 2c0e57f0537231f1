#include "install/HelperCopy.h"

#include "platform/base/Directories.h"
#include "platform/files/StagedCopy.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

QString copyHelper(const QString& source, const QString& destination) {
    try {
        const fs::path target = destination.toStdString();
        if (!platform::makeDirectories(target.parent_path(), 0700))
            throw fs::filesystem_error("mkdir", target.parent_path(),
                                       std::error_code(errno, std::generic_category()));
        platform::StagedCopy(source.toStdString(), target).takePlace();
        return {};
    } catch (const fs::filesystem_error& error) {
        return QString::fromStdString(error.what());
    }
}
