#include "tninstaller/Installer.h"

#include "tninstaller/InstallLock.h"
#include "tninstaller/Removal.h"
#include "tninstaller/Stage.h"
#include "tninstaller/TreeCopy.h"

#include "platform/base/SystemLog.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <system_error>
#include <unistd.h>
#include <utility>

using Trust = GuardedFolder::Trust;
using Items = std::vector<std::vector<std::string>>;

namespace {

/// A source and its destination each, or a path that is removed.
Items itemsOf(const std::vector<std::string>& arguments) {
    const bool isInstall = !arguments.empty() && arguments.front() == "i";
    const bool isUninstall = !arguments.empty() && arguments.front() == "u";
    const std::size_t step = isInstall ? 2 : 1;
    if (!(isInstall || isUninstall) || arguments.size() == 1 || (arguments.size() - 1) % step != 0)
        throw InstallFailure(InstallCode::wrongArguments, "i SOURCE DESTINATION… or u PATH…");
    Items items;
    for (auto at = arguments.begin() + 1; at != arguments.end();
         at += static_cast<std::ptrdiff_t>(step))
        items.emplace_back(at, at + static_cast<std::ptrdiff_t>(step));
    return items;
}

/// The steps of a removal change folders, too; whatever they fail at, it is not removed.
InstallCode codeFor(const std::vector<std::string>& arguments, InstallCode code) {
    const bool isWriting = code == InstallCode::notWritten || code == InstallCode::noRoom;
    return isWriting && arguments.front() == "u" ? InstallCode::notRemoved : code;
}

} // namespace

Installer::Installer(InstallerPlaces places, Caller caller, Trust rootsTrust)
    : places_(std::move(places))
    , installed_(places_.folder + '/' + places_.name)
    , caller_(std::move(caller))
    , rootsTrust_(rootsTrust)
    , bundle_(places_.bundle, caller_, rootsTrust) {}

InstallerReply Installer::run(const std::vector<std::string>& arguments) {
    InstallerReply reply;
    try {
        perform(arguments, reply.index);
    } catch (const InstallFailure& failure) {
        platform::systemLog(platform::LogPriority::error, "%s", failure.what());
        reply.code = codeFor(arguments, failure.code());
    } catch (const std::exception& exception) {
        platform::systemLog(platform::LogPriority::error, "Unexpected: %s", exception.what());
        reply.code = InstallCode::internal;
    }
    return reply;
}

void Installer::perform(const std::vector<std::string>& arguments, std::size_t& index) const {
    const Items items = itemsOf(arguments);
    for (index = 0; index < items.size(); ++index) {
        const auto end = items.begin() + static_cast<std::ptrdiff_t>(index);
        if (std::find(items.begin(), end, *end) != end)
            throw InstallFailure(InstallCode::refused, end->front() + ": named twice");
        check(*end);
    }
    if (std::find(items.begin(), items.end(), std::vector{places_.bundle}) == items.end())
        bundle_.sweepBeside();
    for (index = 0; index < items.size(); ++index)
        carryOut(items[index]);
    index = 0;
}

void Installer::check(const std::vector<std::string>& item) const {
    if (item == std::vector{places_.plugin, installed_} || item == std::vector{installed_})
        return;
    if (item != std::vector{places_.bundle})
        throw InstallFailure(InstallCode::refused, item.front() + ": refused");
    bundle_.expectRemovable();
}

void Installer::carryOut(const std::vector<std::string>& item) const {
    if (item.size() > 1)
        install();
    else if (item.front() == installed_)
        uninstallPlugin();
    else
        bundle_.remove();
}

/// As root, only root's folders are safe; other rights are bounds of their own.
Trust Installer::trust() const noexcept {
    return ::geteuid() == 0 ? rootsTrust_ : Trust::anybodys;
}

/// The path as it can be walked: a library of somebody's own may lie behind a link, root's may not.
std::string Installer::libraryPath(const std::string& path) const {
    if (trust() == Trust::roots)
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

void Installer::install() const {
    const auto stage = Stage::make(libraryPath(places_.folder), trust());
    TreeCopy(caller_).copy(places_.plugin, stage->descriptor(), places_.name);
    stage->synchronise();
    const InstallLock lock(stage->folder());
    stage->putInPlace(places_.name);
}

void Installer::uninstallPlugin() const {
    const std::string folder = libraryPath(places_.folder);
    removeFrom(folder, places_.name, trust(), Others::keptOut);
    GuardedFolder::removeEmpty(folder, libraryPath(places_.localLibrary), trust());
}
