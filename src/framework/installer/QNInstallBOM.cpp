#include "framework/installer/QNInstallBOM.h"

#include "framework/application/ExceptionPlaces.h"
#include "framework/application/QNApplication.h"
#include "framework/installer/ManifestValues.h"

#include "platform/defaults/PropertyList.h"
#include "platform/files/RegularFile.h"
#include "platform/plist/PropertyListNode.h"

#include <QDir>
#include <QFile>

namespace {

QUrl rootOf(const platform::Bundle& bundle) {
    return QUrl::fromLocalFile(QFile::decodeName(bundle.contents().parent_path().c_str()) +
                               QLatin1Char('/'));
}

/// The content of a regular file that is not a link, and no longer than any property list.
std::optional<QByteArray> contentOf(const QByteArray& path) {
    const auto file = platform::openRegularFile(path.constData(), platform::LastLink::refuse);
    QFile content;
    if (!file || !content.open(file.get(), QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray bytes = content.read(platform::propertyListBytes + 1);
    return content.error() == QFileDevice::NoError ? std::optional(bytes) : std::nullopt;
}

QVariantMap unchanged(const QVariantMap& entry) {
    return entry;
}

QVariantMap markedForListing(QVariantMap entry) {
    entry.insert(QStringLiteral("ListingOnly"), true);
    return entry;
}

QVariantMap dictionaryOf(const QVariant& entry) {
    return required(entry.metaType() == QMetaType::fromType<QVariantMap>()
                        ? std::optional(entry.toMap())
                        : std::nullopt);
}

std::optional<QNInstallBOM> readBundle(const platform::Bundle& bundle,
                                       const QNInstallBOM::InstallResourceFilter& filter) {
    const auto dictionary = QNInstallBOM::BOMDictionaryWithBundle(bundle);
    return dictionary ? QNInstallBOM::BOMWithDictionary(*dictionary, rootOf(bundle), filter)
                      : std::nullopt;
}

} // namespace

std::optional<QUrl> QNInstallBOM::BOMURLForBundle(const platform::Bundle& bundle) {
    const auto path = bundle.resource("BOM", {".plist"});
    return path.empty() ? std::nullopt
                        : std::optional(QUrl::fromLocalFile(QFile::decodeName(path.c_str())));
}

std::optional<QVariantMap> QNInstallBOM::BOMDictionaryWithBundle(const platform::Bundle& bundle) {
    const auto url = BOMURLForBundle(bundle);
    const auto content = url ? contentOf(QFile::encodeName(url->toLocalFile())) : std::nullopt;
    const auto root = content ? platform::parsePropertyList(*content) : std::nullopt;
    if (!root || root->metaType() != QMetaType::fromType<QVariantMap>())
        return std::nullopt;
    return root->toMap();
}

std::optional<QNInstallBOM> QNInstallBOM::BOMWithBundle(const platform::Bundle& bundle) {
    return readBundle(bundle, &unchanged);
}

std::optional<QNInstallBOM> QNInstallBOM::BOMInfoWithBundle(const platform::Bundle& bundle) {
    return readBundle(bundle, &markedForListing);
}

std::optional<QNInstallBOM> QNInstallBOM::BOMWithDictionary(const QVariantMap& dictionary,
                                                            const QUrl& resourceRoot) {
    return BOMWithDictionary(dictionary, resourceRoot, &unchanged);
}

std::optional<QNInstallBOM> QNInstallBOM::BOMWithDictionary(const QVariantMap& dictionary,
                                                            const QUrl& resourceRoot,
                                                            const InstallResourceFilter& filter) {
    try {
        QNInstallBOM manifest;
        manifest.readInstall(required(dictionaryIn(dictionary, "Install")), resourceRoot, filter);
        manifest.readUninstall(required(dictionaryIn(dictionary, "Uninstall")));
        return manifest;
    } catch (...) {
        QNApplication::logException(kExceptionInInstallManifest, std::current_exception());
        return std::nullopt;
    }
}

void QNInstallBOM::readInstall(const QVariantMap& section, const QUrl& resourceRoot,
                               const InstallResourceFilter& filter) {
    forceCleanInstall_ = isSet(section, "ForceClean");
    if (const auto location = textIn(section, "DefaultLocation"); location && !location->isEmpty())
        defaultLocation_ = QUrl::fromLocalFile(QDir::cleanPath(*location) + QLatin1Char('/'));
    for (const QVariant& entry : required(listIn(section, "Resources")))
        installResources_.push_back(QNInstallResource::installResourceWithDictionary(
            withDestination(filter(dictionaryOf(entry))), resourceRoot));
}

void QNInstallBOM::readUninstall(const QVariantMap& section) {
    for (const QVariant& entry : required(listIn(section, "Resources")))
        uninstallResources_.push_back(
            QNUninstallResource::uninstallResourceWithDictionary(dictionaryOf(entry)));
}

QVariantMap QNInstallBOM::withDestination(QVariantMap entry) const {
    const QString name =
        QDir::cleanPath(textIn(entry, "From").value_or(QString())).section(QLatin1Char('/'), -1);
    if (defaultLocation_ && textIn(entry, "To").value_or(QString()).isEmpty())
        entry.insert(QStringLiteral("To"), defaultLocation_->toLocalFile() + name);
    return entry;
}
