#include "install/HelperCopy.h"

#include "platform/base/Directories.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

namespace fs = std::filesystem;

namespace {

/// A new folder beside a path, removed with all that is in it.
class StagingFolder {
  public:
    explicit StagingFolder(const fs::path& beside) : path_(beside.string() + ".XXXXXX") {
        if (::mkdtemp(path_.data()) == nullptr)
            throw fs::filesystem_error("mkdtemp", path_,
                                       std::error_code(errno, std::generic_category()));
    }
    ~StagingFolder() {
        std::error_code error;
        fs::remove_all(path_, error);
    }
    StagingFolder(const StagingFolder&) = delete;
    StagingFolder& operator=(const StagingFolder&) = delete;

    fs::path path() const { return path_; }

  private:
    std::string path_;
};

} // namespace

QString copyHelper(const QString& source, const QString& destination) {
    try {
        const fs::path target = destination.toStdString();
        if (!platform::makeDirectories(target.parent_path(), 0700))
            throw fs::filesystem_error("mkdir", target.parent_path(),
                                       std::error_code(errno, std::generic_category()));
        const StagingFolder staging(target);
        const fs::path copy = staging.path() / target.filename();
        fs::copy(source.toStdString(), copy, fs::copy_options::recursive);
        fs::rename(copy, target);
        return {};
    } catch (const fs::filesystem_error& error) {
        return QString::fromStdString(error.what());
    }
}
