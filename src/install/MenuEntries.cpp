#include "install/MenuEntries.h"

#include "framework/application/QNApplication.h"
#include "framework/log/qnlog.h"
#include "platform/base/Directories.h"

#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

namespace {

void removeFile(const fs::path& file) {
    std::error_code error;
    fs::remove(file, error);
    if (error)
        QNLogText(qnlog_error, QString::fromStdString("Couldn't remove " + file.string() + ": " +
                                                      error.message()));
}

} // namespace

void removeMenuEntries() {
    const fs::path data = platform::applicationSupportDirectory(platform::Domain::user);
    if (data.empty())
        return;
    removeFile(data / "applications/com.quarnel.Tonvale.desktop");
    std::error_code none;
    for (fs::directory_iterator size(data / "icons/hicolor", none), end; size != end;
         size.increment(none)) {
        for (const char* const name : {"com.quarnel.Tonvale.png", "com.quarnel.Tonvale.svg"})
            removeFile(size->path() / "apps" / name);
    }
}
