#include "tninstaller/OwnBundle.h"

#include "tninstaller/InstallFailure.h"
#include "tninstaller/Removal.h"
#include "tninstaller/Stage.h"

#include "platform/base/FileDescriptor.h"

#include <algorithm>
#include <exception>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

using platform::FileDescriptor;
using Trust = GuardedFolder::Trust;

namespace {

constexpr std::string_view identifier = "<string>com.quarnel.Tonvale</string>";
constexpr std::size_t longestInformation = std::size_t{64} << 10U;

FileDescriptor folderIn(int parent, const char* name) {
    return FileDescriptor(::openat(parent, name, O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

std::string beginningOf(int folder, const char* name) {
    const FileDescriptor file(
        ::openat(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    std::string text(longestInformation, '\0');
    const ssize_t size = file ? ::read(file.get(), text.data(), text.size()) : 0;
    text.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    return text;
}

/// Also where it cannot be told.
bool isPackages(int contents) {
    const FileDescriptor resources = folderIn(contents, "Resources");
    struct stat status {};
    return (resources &&
            ::fstatat(resources.get(), "package", &status, AT_SYMLINK_NOFOLLOW) == 0) ||
           errno != ENOENT;
}

} // namespace

OwnBundle::OwnBundle(std::string path, const Caller& caller, Trust rootsTrust)
    : path_(std::move(path))
    , above_(path_.substr(0, std::max<std::size_t>(path_.rfind('/'), 1)))
    , name_(path_.substr(path_.rfind('/') + 1))
    , caller_(caller)
    , rootsTrust_(rootsTrust) {}

void OwnBundle::expectRemovable() const {
    check();
    asWhoMayChangeFolder([this](Trust trust) { (void)folder(trust); });
}

void OwnBundle::remove() const {
    check();
    asWhoMayChangeFolder(
        [this](Trust trust) { removeFrom(above_, name_, trust, Others::admitted); });
}

void OwnBundle::sweepBeside() const noexcept {
    try {
        asWhoMayChangeFolder([this](Trust trust) { Stage::sweep(folder(trust)); });
    } catch (const std::exception&) {
        // No removal has left anything where none is allowed.
    }
}

void OwnBundle::asWhoMayChangeFolder(const Work& work) const {
    {
        const Caller::Identity identity(caller_);
        const GuardedFolder above = folder(Trust::anybodys);
        if (::faccessat(above.descriptor(), ".", W_OK | X_OK, AT_EACCESS) == 0)
            return work(::geteuid() == 0 ? rootsTrust_ : Trust::anybodys);
        if (errno == EROFS)
            throw failureAt(above_, InstallCode::notRemoved);
    }
    work(::geteuid() == 0 ? rootsTrust_ : Trust::anybodys);
}

GuardedFolder OwnBundle::folder(Trust trust) const {
    auto above = GuardedFolder::find(above_, trust);
    if (!above)
        throw failureAt(above_, InstallCode::notRemoved);
    return *std::move(above);
}

void OwnBundle::check() const {
    const Caller::Identity identity(caller_);
    const GuardedFolder above = folder(Trust::anybodys);
    const FileDescriptor bundle = folderIn(above.descriptor(), name_.c_str());
    struct stat status {};
    if (!bundle || ::fstat(bundle.get(), &status) != 0)
        throw failureAt(path_, InstallCode::notRemoved);
    if (status.st_uid != caller_.uid() && status.st_uid != 0)
        throw InstallFailure(InstallCode::refused, path_ + ": it belongs to another user");
    checkContents(bundle.get());
}

void OwnBundle::checkContents(int bundle) const {
    const FileDescriptor contents = folderIn(bundle, "Contents");
    if (beginningOf(contents.get(), "Info.plist").find(identifier) == std::string::npos)
        throw InstallFailure(InstallCode::refused, path_ + ": not Tonvale's bundle");
    if (isPackages(contents.get()))
        throw InstallFailure(InstallCode::refused, path_ + ": it belongs to a package");
}
