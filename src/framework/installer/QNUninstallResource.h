#pragma once

#include <QUrl>
#include <QVariantMap>

/// An entry of an install manifest: a path that uninstalling removes. Immutable; any thread.
class QNUninstallResource {
  public:
    /// Reads an entry with the keys "Path", absolute or in the reading user's home with "~/", and
    /// "IgnoreForced". Throws std::invalid_argument for another path or none.
    static QNUninstallResource uninstallResourceWithDictionary(const QVariantMap& dictionary);

    [[nodiscard]] const QUrl& path() const noexcept { return path_; }

    /// Whether the path stays when an installation first removes what an earlier one has left.
    [[nodiscard]] bool ignoreForcedClean() const noexcept { return ignoreForcedClean_; }

  private:
    QNUninstallResource(QUrl path, bool ignoreForcedClean);

    QUrl path_;
    bool ignoreForcedClean_;
};
