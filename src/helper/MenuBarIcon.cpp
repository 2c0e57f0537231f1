#include "helper/MenuBarIcon.h"

#include "platform/base/Directories.h"
#include "platform/bundle/Bundle.h"

#include <fstream>
#include <string>
#include <utility>

namespace {

bool readsOne(const std::filesystem::path& file) {
    std::ifstream stream(file);
    char character = 0;
    return stream.get(character) && character == '1';
}

} // namespace

MenuBarIcon::MenuBarIcon(std::filesystem::path file)
    : file_(std::move(file)), isColor_(readsOne(file_)) {}

bool MenuBarIcon::reload() {
    const bool isColor = readsOne(file_);
    return std::exchange(isColor_, isColor) != isColor;
}

QString MenuBarIcon::name(bool isMuted) const {
    QString name = QStringLiteral("com.quarnel.Tonvale");
    if (isMuted)
        name += QLatin1String("-muted");
    if (!isColor_)
        name += QLatin1String("-symbolic");
    return name;
}

QString MenuBarIcon::themePath() {
    return QString::fromStdString(platform::Bundle::main().resources() / "icons");
}

std::filesystem::path MenuBarIcon::preferenceFile() {
    const std::string folder = platform::applicationSupportDirectory(platform::Domain::user);
    if (folder.empty())
        return {};
    return std::filesystem::path(folder) / "Tonvale/UseColorMenuBarIcon";
}
