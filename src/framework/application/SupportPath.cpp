#include "framework/application/SupportPath.h"

#include "framework/application/QNApplication.h"

#include "platform/base/Directories.h"

#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr mode_t ownerRights = 0700;

void checkFolder(const QString& path, bool shared) {
    struct stat folder {};
    if (::stat(path.toUtf8().constData(), &folder) != 0) {
        QNLog(1, "Support path is not accessible! (%@)", path);
        return;
    }
    const uid_t user = ::geteuid();
    if (!shared && user != 0 && folder.st_uid != user)
        QNLog(1, "Support path is not owned by us! %u != %u (%@)", folder.st_uid, user, path);
    if ((folder.st_mode & ownerRights) < ownerRights)
        QNLog(2, "Support path has unexpected permissions! %u (%@)", folder.st_mode & 07777U, path);
}

} // namespace

QString makeSupportPath(const QString& leaf, bool shared) {
    const std::string parent = platform::applicationSupportDirectory(
        shared ? platform::Domain::local : platform::Domain::user);
    if (parent.empty())
        return {};
    const QString path = QString::fromStdString(parent) + QLatin1Char('/') + leaf;
    // The check below reports a folder that could not be created.
    [[maybe_unused]] const bool made =
        platform::makeDirectories(path.toStdString(), shared ? mode_t{0755} : ownerRights);
    checkFolder(path, shared);
    return path;
}
