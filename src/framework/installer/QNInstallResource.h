#pragma once

#include <QUrl>
#include <QVariantMap>

#include <cstddef>
#include <cstdint>
#include <sys/types.h>
#include <system_error>

/// Why an install resource is not valid.
struct QNInstallError {
    std::error_code code; ///< of the generic category, which has the numbers of errno
    QString failingUrl;
};

/// An entry of an install manifest: a file or folder of the bundle, where it is installed, and the
/// owner and permissions that it gets there. Two entries are equal if their sources are. Immutable;
/// any thread.
class QNInstallResource {
  public:
    /// Reads an entry with the keys "From", a path below `resourceRoot`, "To", an absolute path,
    /// "User" and "Group", by default those that this process runs as, and "Mask", octal. Throws
    /// std::invalid_argument for a missing or unusable value, and for an unknown user or group.
    static QNInstallResource installResourceWithDictionary(const QVariantMap& dictionary,
                                                           const QUrl& resourceRoot);

    [[nodiscard]] const QUrl& from() const noexcept { return from_; }
    [[nodiscard]] const QUrl& to() const noexcept { return to_; }
    [[nodiscard]] uid_t uid() const noexcept { return uid_; }
    [[nodiscard]] gid_t gid() const noexcept { return gid_; }
    [[nodiscard]] mode_t mask() const noexcept { return mask_; }

    /// Whether the source is still the file that it was when the entry was read, and no symbolic
    /// link. If not, `error`, unless null, gets EPERM and the source's URL.
    [[nodiscard]] bool validateAndReturnError(QNInstallError* error = nullptr) const;

    bool operator==(const QNInstallResource& other) const { return from_ == other.from_; }
    [[nodiscard]] std::size_t hash() const noexcept { return qHash(from_); }

  private:
    QNInstallResource() = default;

    QUrl from_;
    QUrl to_;
    uid_t uid_ = 0;
    gid_t gid_ = 0;
    mode_t mask_ = 0;
    std::uint64_t identity_ = 0; // of the source, 0 for none
};
