#include "framework/installer/QNUninstallResource.h"

#include "framework/installer/ManifestValues.h"

#include "platform/base/Directories.h"

#include <QDir>
#include <QFile>

namespace {

/// A user without a home has no "~/": it must never become "/".
QString expanded(const QString& path) {
    if (path.startsWith(QLatin1Char('/')))
        return path;
    const std::string home = platform::homeDirectory();
    if (!path.startsWith(QLatin1String("~/")) || home.empty())
        throw ManifestError("Invalid resource path.");
    return QFile::decodeName(home.c_str()) + path.mid(1);
}

} // namespace

QNUninstallResource::QNUninstallResource(QUrl path, bool ignoreForcedClean)
    : path_(std::move(path)), ignoreForcedClean_(ignoreForcedClean) {}

QNUninstallResource
QNUninstallResource::uninstallResourceWithDictionary(const QVariantMap& dictionary) {
    const QString path = QDir::cleanPath(expanded(required(textIn(dictionary, "Path"))));
    return {QUrl::fromLocalFile(path), isSet(dictionary, "IgnoreForced")};
}
