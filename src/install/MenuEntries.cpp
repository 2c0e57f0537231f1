#include "install/MenuEntries.h"

#include "framework/application/QNApplication.h"
#include "framework/log/qnlog.h"
#include "platform/base/Directories.h"
#include "platform/bundle/Bundle.h"

#include <QFile>
#include <QSaveFile>

#include <cerrno>
#include <cstring>
#include <string>
#include <string_view>
#include <system_error>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr const char* sharedData = "/usr/local/share";
constexpr const char* entryInData = "applications/com.quarnel.Tonvale.desktop";
constexpr const char* serviceInData = "dbus-1/services/com.quarnel.Tonvale.service";
constexpr const char* templateInResources = "com.quarnel.Tonvale.desktop.in";

fs::path userData() {
    return platform::applicationSupportDirectory(platform::Domain::user);
}

fs::path programOf(const fs::path& bundle) {
    return bundle / "Contents/Linux" /
           platform::Bundle(bundle / "Contents").text("CFBundleExecutable");
}

/// A path between quotes, in a file that itself reads backslashes as escapes.
std::string quotable(const std::string& path, bool doublesPercents) {
    std::string word;
    for (const char each : path) {
        if (std::string_view("\"`$\\").find(each) != std::string_view::npos)
            word += "\\\\";
        if (each == '\\' || (each == '%' && doublesPercents))
            word += each;
        word += each;
    }
    return word;
}

void report(const char* what, const fs::path& file, const std::string& reason) {
    QNLog(qnlog_error, "Couldn't %@ %@: %@", what, file.string(), reason);
}

void writeFile(const fs::path& file, const QByteArray& content) {
    constexpr mode_t usual = 0755;
    if (!platform::makeDirectories(file.parent_path(), usual)) {
        report("make", file.parent_path(), std::strerror(errno));
        return;
    }
    QSaveFile saved(QString::fromStdString(file));
    if (!saved.open(QIODevice::WriteOnly) || saved.write(content) != content.size() ||
        !saved.commit())
        report("write", file, saved.errorString().toStdString());
}

QByteArray entryFor(const fs::path& bundle) {
    QFile file(QString::fromStdString(bundle / "Contents/Resources" / templateInResources));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll().replace("@TONVALE_INSTALLED_PROGRAM@",
                                  QByteArray::fromStdString(quotable(programOf(bundle), true)));
}

void writeIcons(const fs::path& bundle, const fs::path& data) {
    const fs::path icons = bundle / "Contents/Resources/icons/hicolor";
    std::error_code error;
    for (fs::recursive_directory_iterator each(icons, error), end; each != end;
         each.increment(error)) {
        QFile file(QString::fromStdString(each->path()));
        if (each->is_regular_file(error) && file.open(QIODevice::ReadOnly))
            writeFile(data / "icons/hicolor" / each->path().lexically_relative(icons),
                      file.readAll());
    }
    if (error)
        report("read", icons, error.message());
}

void removeFile(const fs::path& file) {
    std::error_code error;
    fs::remove(file, error);
    if (error)
        report("remove", file, error.message());
}

void removeFrom(const fs::path& data) {
    removeFile(data / entryInData);
    removeFile(data / serviceInData);
    std::error_code none;
    for (fs::directory_iterator size(data / "icons/hicolor", none), end; size != end;
         size.increment(none)) {
        for (const char* const name : {"com.quarnel.Tonvale.png", "com.quarnel.Tonvale.svg"})
            removeFile(size->path() / "apps" / name);
    }
}

bool isEntryOf(const fs::path& file, const fs::path& bundle) {
    QFile entry(QString::fromStdString(file));
    const std::string below = fs::path(bundle / "Contents/").string();
    return entry.open(QIODevice::ReadOnly) &&
           entry.readAll().contains(QByteArray::fromStdString(quotable(below, true)));
}

} // namespace

void writeMenuEntries(const fs::path& bundle) {
    const bool isForAll = bundle.parent_path() == platform::builtInLocalApplicationsDirectory() &&
                          ::access(sharedData, W_OK) == 0;
    const fs::path data = isForAll ? fs::path(sharedData) : userData();
    const QByteArray entry = entryFor(bundle);
    if (data.empty() || entry.isEmpty()) {
        report("write", "the menu entry", "there is no place or no entry for it");
        return;
    }
    writeFile(data / entryInData, entry);
    writeFile(data / serviceInData,
              "[D-BUS Service]\nName=com.quarnel.Tonvale\nExec=\"" +
                  QByteArray::fromStdString(quotable(programOf(bundle), false)) + "\"\n");
    writeIcons(bundle, data);
}

void removeMenuEntries(const fs::path& bundle) {
    if (const fs::path data = userData(); !data.empty())
        removeFrom(data);
    if (isEntryOf(fs::path(sharedData) / entryInData, bundle))
        removeFrom(sharedData);
}
