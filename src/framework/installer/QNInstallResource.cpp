#include "framework/installer/QNInstallResource.h"

#include "framework/installer/ManifestValues.h"

#include "platform/base/Accounts.h"

#include <QDir>
#include <QFile>

#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace {

std::optional<struct stat> statusOf(const QUrl& url) {
    struct stat status {};
    if (::lstat(QFile::encodeName(url.toLocalFile()).constData(), &status) != 0)
        return std::nullopt;
    return status;
}

/// Tells a file from all others that exist at the same time; 0 if there is none.
std::uint64_t identityOf(const std::optional<struct stat>& status) noexcept {
    return status ? std::uint64_t{status->st_dev} << 32U ^ std::uint64_t{status->st_ino} : 0;
}

/// `path` below `root`, with everything escaped that would mean something in a URL.
QUrl sourceUrl(const QString& path, QUrl root) {
    if (!root.path().endsWith(QLatin1Char('/')))
        root.setPath(root.path() + QLatin1Char('/'));
    return root.resolved(QUrl::fromEncoded(QUrl::toPercentEncoding(path, "/")));
}

QUrl destinationUrl(const QString& path) {
    if (!path.startsWith(QLatin1Char('/')))
        throw ManifestError("Invalid resource destination.");
    return QUrl::fromLocalFile(QDir::cleanPath(path));
}

/// The id of the name at `key`; without such a key `own`.
template <typename Id>
std::optional<Id> idIn(const QVariantMap& dictionary, const char* key, Id own,
                       std::optional<Id> (*named)(const std::string&)) {
    if (!dictionary.contains(QString::fromLatin1(key)))
        return own;
    const auto name = textIn(dictionary, key);
    return name ? named(name->toStdString()) : std::nullopt;
}

std::optional<mode_t> octalIn(const QVariantMap& dictionary, const char* key) {
    bool isNumber = false;
    const unsigned number = textIn(dictionary, key).value_or(QString()).toUInt(&isNumber, 8);
    return isNumber && number <= ALLPERMS ? std::optional<mode_t>(number) : std::nullopt;
}

} // namespace

QNInstallResource QNInstallResource::installResourceWithDictionary(const QVariantMap& dictionary,
                                                                   const QUrl& resourceRoot) {
    QNInstallResource resource;
    resource.from_ = sourceUrl(required(textIn(dictionary, "From")), resourceRoot);
    resource.identity_ = identityOf(statusOf(resource.from_));
    resource.to_ = destinationUrl(textIn(dictionary, "To").value_or(QString()));
    resource.uid_ = required(idIn(dictionary, "User", ::geteuid(), &platform::userNamed));
    resource.gid_ = required(idIn(dictionary, "Group", ::getegid(), &platform::groupNamed));
    resource.mask_ = required(octalIn(dictionary, "Mask"));
    return resource;
}

bool QNInstallResource::validateAndReturnError(QNInstallError* error) const {
    const auto status = statusOf(from_);
    const std::uint64_t now = identityOf(status);
    if (now != 0 && now == identity_ && !S_ISLNK(status->st_mode))
        return true;
    if (error != nullptr)
        *error = {std::error_code(EPERM, std::generic_category()), from_.toString()};
    return false;
}
