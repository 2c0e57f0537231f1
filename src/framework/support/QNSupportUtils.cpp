#include "framework/support/QNSupportUtils.h"

#include "framework/installer/QNInstallBOM.h"

#include <QFileInfo>

namespace {

bool isExecutableOrBundle(const QUrl& url) {
    const QFileInfo item(url.toLocalFile());
    if (item.isDir())
        return QFileInfo(item.filePath() + QStringLiteral("/Contents/Info.plist")).isFile();
    return item.isFile() && item.isExecutable();
}

} // namespace

std::optional<QList<QUrl>>
QNSupportUtils::installerExecutablesAndBundles(const platform::Bundle& bundle) {
    const auto manifest = QNInstallBOM::BOMInfoWithBundle(bundle);
    if (!manifest)
        return std::nullopt;
    QList<QUrl> found;
    for (const QNInstallResource& resource : manifest->installResources()) {
        if (isExecutableOrBundle(resource.from()))
            found.append(resource.from());
    }
    return found;
}
