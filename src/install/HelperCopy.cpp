#include "install/HelperCopy.h"

#include "platform/base/Directories.h"
#include "platform/base/FileDescriptor.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <string_view>
#include <sys/file.h>
#include <system_error>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

[[noreturn]] void fail(const char* what, const fs::path& path) {
    throw fs::filesystem_error(what, path, std::error_code(errno, std::generic_category()));
}

/// A new folder beside a path, removed with all that is in it. It is locked while it lives, which
/// tells it from one that a killed program has left.
class StagingFolder {
  public:
    explicit StagingFolder(const fs::path& beside)
        : path_(beside.string().append(separator).append(randomPart)) {
        if (::mkdtemp(path_.data()) == nullptr)
            fail("mkdtemp", path_);
        folder_ = open(path_);
        static_cast<void>(lock(folder_)); // some file systems cannot
    }
    ~StagingFolder() {
        std::error_code error;
        fs::remove_all(path_, error);
    }
    StagingFolder(const StagingFolder&) = delete;
    StagingFolder& operator=(const StagingFolder&) = delete;

    fs::path path() const { return path_; }

    /// Returns when all that is in it is on the disk.
    void synchronise() const {
        if (::syncfs(folder_.get()) != 0)
            fail("syncfs", path_);
    }

    /// Removes those of killed programs.
    static void sweep(const fs::path& beside) {
        std::error_code error;
        for (const auto& item : fs::directory_iterator(beside.parent_path(), error)) {
            const platform::FileDescriptor folder =
                isStage(item.path().filename().string(), beside.filename().string())
                    ? open(item.path())
                    : platform::FileDescriptor();
            if (folder && lock(folder))
                fs::remove_all(item.path(), error);
        }
    }

  private:
    static constexpr std::string_view separator = ".";
    static constexpr std::string_view randomPart = "XXXXXX";

    static bool isStage(std::string_view name, std::string_view target) {
        return name.size() == target.size() + separator.size() + randomPart.size() &&
               name.starts_with(target) && name.substr(target.size()).starts_with(separator);
    }
    static platform::FileDescriptor open(const fs::path& path) {
        return platform::FileDescriptor(
            ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    }
    static bool lock(const platform::FileDescriptor& folder) {
        return ::flock(folder.get(), LOCK_EX | LOCK_NB) == 0;
    }

    std::string path_;
    platform::FileDescriptor folder_;
};

} // namespace

QString copyHelper(const QString& source, const QString& destination) {
    try {
        const fs::path target = destination.toStdString();
        if (!platform::makeDirectories(target.parent_path(), 0700))
            fail("mkdir", target.parent_path());
        StagingFolder::sweep(target);
        const StagingFolder staging(target);
        const fs::path copy = staging.path() / target.filename();
        fs::copy(source.toStdString(), copy, fs::copy_options::recursive);
        staging.synchronise();
        fs::rename(copy, target);
        return {};
    } catch (const fs::filesystem_error& error) {
        return QString::fromStdString(error.what());
    }
}
