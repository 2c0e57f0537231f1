#include "install/InstallVolume.h"

#include "framework/application/QNApplication.h"
#include "framework/installer/BundleSearch.h"
#include "framework/log/qnlog.h"
#include "platform/base/Directories.h"
#include "platform/desktop/DiskImageEjection.h"
#include "platform/files/SetAside.h"
#include "platform/volumes/DiskImage.h"

#include <QStandardPaths>

#include <cerrno>
#include <cstring>
#include <system_error>

namespace fs = std::filesystem;

namespace {

bool holds(const std::string& volume, const fs::path& bundle) {
    const BundleFacts own = bundleFacts(bundle);
    const BundleFacts there = bundleFacts(fs::path(volume) / bundle.filename());
    return !own.identifier.empty() && there.identifier == own.identifier &&
           there.version == own.version;
}

bool isBelow(const fs::path& file, const fs::path& folder) {
    std::error_code error;
    const fs::path real = fs::weakly_canonical(folder, error);
    return !folder.empty() && !error && real != "/" &&
           file.native().starts_with((real / "").native());
}

bool isWherePeoplePutFiles(const fs::path& file) {
    const std::string downloads =
        QStandardPaths::writableLocation(QStandardPaths::DownloadLocation).toStdString();
    for (const std::string& folder :
         {platform::homeDirectory(), downloads, platform::temporaryDirectory(),
          platform::sharedTemporaryDirectory(), std::string("/tmp")}) {
        if (isBelow(file, folder))
            return true;
    }
    return false;
}

void trashImage(const std::string& file) {
    std::error_code error;
    if (!fs::is_regular_file(file, error) || !isWherePeoplePutFiles(file))
        return;
    if (platform::SetAside::toTrash(file))
        QNLog(qnlog_information, "The disk image %@ was moved to the Trash", file);
    else
        QNLog(qnlog_warning, "The disk image %@ can't be moved to the Trash: %@", file,
              std::strerror(errno));
}

} // namespace

void disposeOfInstallVolume(const std::string& volume, const fs::path& bundle,
                            const QDBusConnection& systemBus) {
    const auto image = platform::diskImageAt(volume);
    if (!image || !holds(volume, bundle)) {
        QNLog(qnlog_information, "The install disk is no longer at %@", volume);
        return;
    }
    platform::ejectDiskImage(systemBus, *image, [image](bool isUnmounted) {
        QNLog(qnlog_information,
              isUnmounted ? "The install disk at %@ was ejected"
                          : "The install disk at %@ stays mounted",
              image->mountPoint);
        trashImage(image->file);
    });
}
