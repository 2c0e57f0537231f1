#include "tninstaller/Installer.h"

#include "tninstaller/InstallLock.h"
#include "tninstaller/Removal.h"
#include "tninstaller/Stage.h"
#include "tninstaller/TreeCopy.h"

#include "platform/base/SystemLog.h"

#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

using platform::FileDescriptor;

namespace {

constexpr std::string_view identifier = "<string>com.quarnel.Tonvale</string>";
constexpr std::size_t longestInformation = std::size_t{64} << 10U;

/// The user whose folder that is; nothing, with errno set, if it is none.
std::optional<uid_t> ownerOf(const GuardedFolder& folder, const std::string& name) {
    struct stat status {};
    if (::fstatat(folder.descriptor(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return std::nullopt;
    errno = ENOTDIR;
    return S_ISDIR(status.st_mode) ? std::optional(status.st_uid) : std::nullopt;
}

std::string beginningOf(int folder, const char* path) {
    const FileDescriptor file(
        ::openat(folder, path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    std::string text(longestInformation, '\0');
    const ssize_t size = file ? ::read(file.get(), text.data(), text.size()) : 0;
    text.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    return text;
}

} // namespace

Installer::Installer(InstallerPlaces places, Caller caller)
    : places_(std::move(places)), caller_(std::move(caller)) {}

InstallerReply Installer::run(const std::vector<std::string>& arguments) {
    InstallerReply reply;
    try {
        const bool isInstall = !arguments.empty() && arguments.front() == "i";
        const bool isUninstall = !arguments.empty() && arguments.front() == "u";
        const std::size_t step = isInstall ? 2 : 1;
        if (!(isInstall || isUninstall) || arguments.size() == 1 ||
            (arguments.size() - 1) % step != 0)
            throw InstallFailure(InstallCode::wrongArguments, "i SOURCE DESTINATION… or u PATH…");
        for (std::size_t at = 1; at < arguments.size(); at += step, ++reply.index) {
            if (isInstall)
                install(arguments[at], arguments[at + 1]);
            else
                uninstall(arguments[at]);
        }
        reply.index = 0;
    } catch (const InstallFailure& failure) {
        platform::systemLog(platform::LogPriority::error, "%s", failure.what());
        reply.code = failure.code();
    } catch (const std::exception& exception) {
        platform::systemLog(platform::LogPriority::error, "Unexpected: %s", exception.what());
        reply.code = InstallCode::internal;
    }
    return reply;
}

/// With more rights than the caller has, only root's folders are safe.
GuardedFolder::Trust Installer::trust() const noexcept {
    return caller_.isElevated() ? GuardedFolder::Trust::roots : GuardedFolder::Trust::anybodys;
}

/// The path as it can be walked: the caller's own library may lie behind a link, root's may not.
std::string Installer::libraryPath(const std::string& path) const {
    if (caller_.isElevated())
        return path;
    constexpr int tries = 100; // what is there may be removed at this instant
    std::error_code error = std::make_error_code(std::errc::no_such_file_or_directory);
    std::filesystem::path canonical;
    for (int left = tries; left > 0 && error == std::errc::no_such_file_or_directory; --left)
        canonical = std::filesystem::weakly_canonical(path, error);
    if (error)
        throw InstallFailure(InstallCode::notWritten, path + ": " + error.message());
    return canonical;
}

void Installer::install(const std::string& source, const std::string& destination) {
    if (source != places_.plugin || destination != places_.folder + '/' + places_.name)
        throw InstallFailure(InstallCode::refused, source + " to " + destination + ": refused");
    const auto stage = Stage::make(libraryPath(places_.folder), trust());
    TreeCopy(caller_).copy(source, stage->descriptor(), places_.name);
    stage->synchronise();
    const InstallLock lock(stage->folder());
    stage->putInPlace(places_.name);
}

void Installer::uninstall(const std::string& path) {
    if (path == places_.folder + '/' + places_.name)
        uninstallPlugin();
    else if (path == places_.bundle)
        uninstallBundle();
    else
        throw InstallFailure(InstallCode::refused, path + ": refused");
}

void Installer::uninstallPlugin() {
    const std::string path = libraryPath(places_.folder);
    removeFrom(path, places_.name, trust(), Others::keptOut);
    GuardedFolder::removeEmpty(path, libraryPath(places_.localLibrary), trust());
}

/// One of the caller's own with the caller's rights, one of root's as root, nobody else's. What the
/// caller may not see is not looked at either.
void Installer::uninstallBundle() {
    const std::size_t slash = places_.bundle.rfind('/');
    const std::string above = slash == 0 ? "/" : places_.bundle.substr(0, slash);
    const std::string name = places_.bundle.substr(slash + 1);
    {
        const Caller::Identity identity(caller_);
        const auto folder = GuardedFolder::find(above, GuardedFolder::Trust::anybodys);
        const auto owner = folder ? ownerOf(*folder, name) : std::nullopt;
        if (!owner)
            throw failureAt(places_.bundle, InstallCode::notRemoved);
        if (*owner == caller_.uid())
            return removeBundleIn(*folder, name, GuardedFolder::Trust::anybodys);
        if (*owner != 0)
            throw InstallFailure(InstallCode::refused,
                                 places_.bundle + ": it belongs to another user");
    }
    const auto folder = GuardedFolder::find(above, trust());
    if (!folder)
        throw failureAt(places_.bundle, InstallCode::notRemoved);
    removeBundleIn(*folder, name, trust());
}

void Installer::removeBundleIn(const GuardedFolder& folder, const std::string& name,
                               GuardedFolder::Trust trust) const {
    const FileDescriptor bundle(::openat(folder.descriptor(), name.c_str(),
                                         O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!bundle)
        throw failureAt(places_.bundle, InstallCode::notRemoved);
    expectBundle(bundle.get());
    removeFrom(folder.path(), name, trust, Others::admitted);
}

void Installer::expectBundle(int bundle) const {
    if (beginningOf(bundle, "Contents/Info.plist").find(identifier) == std::string::npos)
        throw InstallFailure(InstallCode::refused, places_.bundle + ": not Tonvale's bundle");
    struct stat status {};
    if (::fstatat(bundle, "Contents/Resources/package", &status, AT_SYMLINK_NOFOLLOW) == 0 ||
        errno != ENOENT)
        throw InstallFailure(InstallCode::refused, places_.bundle + ": it belongs to a package");
}
