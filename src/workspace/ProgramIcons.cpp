#include "workspace/ProgramIcons.h"

#include "workspace/ImageWarningFilter.h"

#include <QFileInfo>
#include <QStandardPaths>
#include <QStringList>

#include <cstring>

namespace {

constexpr int usualSize = 32;
constexpr qsizetype mostKept = 4096;

/// A theme may name a file that is damaged or of a format without a reader.
bool isUsable(const QIcon& icon) {
    return !icon.isNull() && !icon.pixmap(usualSize).isNull();
}

/// Some write the name of a file where the name of an icon belongs.
QString withoutSuffix(const QString& icon) {
    for (const char* const suffix : {".png", ".svg", ".xpm"}) {
        if (icon.endsWith(QLatin1String(suffix)))
            return icon.chopped(static_cast<qsizetype>(std::strlen(suffix)));
    }
    return icon;
}

QIcon named(const QString& icon) {
    if (icon.isEmpty())
        return {};
    if (icon.startsWith(QLatin1Char('/')))
        return QIcon(icon);
    return icon.contains(QLatin1Char('/')) ? QIcon() : QIcon::fromTheme(withoutSuffix(icon));
}

} // namespace

ProgramIcons::ProgramIcons() {
    // Without one, Qt does not look into the theme that every program puts its icon in.
    if (QIcon::themeName().isEmpty())
        QIcon::setThemeName(QStringLiteral("hicolor"));
    QStringList folders = QIcon::fallbackSearchPaths();
    for (const QString& folder :
         QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation)) {
        if (const QString path = folder + QStringLiteral("/pixmaps"); !folders.contains(path))
            folders += path;
    }
    QIcon::setFallbackSearchPaths(folders);
}

void ProgramIcons::setTileColors(const TileColors& colors) {
    colors_ = colors;
    known_.clear();
}

QIcon ProgramIcons::icon(const QString& icon, const QString& executable, const QString& name) {
    const QString key = QStringList{icon, executable, name}.join(QChar(0));
    if (const auto known = known_.constFind(key); known != known_.cend())
        return *known;
    if (known_.size() >= mostKept)
        known_.clear();
    return known_[key] = find(icon, executable, name);
}

QIcon ProgramIcons::find(const QString& icon, const QString& executable,
                         const QString& name) const {
    const ImageWarningFilter foreign;
    for (const QString& each : {icon, QFileInfo(executable).fileName()}) {
        if (QIcon found = named(each); isUsable(found))
            return found;
    }
    return letterTile(name, colors_);
}
