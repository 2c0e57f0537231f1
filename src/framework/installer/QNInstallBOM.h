#pragma once

#include "framework/installer/QNInstallResource.h"
#include "framework/installer/QNUninstallResource.h"

#include "platform/bundle/Bundle.h"

#include <QUrl>
#include <QVariantMap>

#include <functional>
#include <optional>
#include <vector>

/// The install manifest of a bundle, its resource "BOM.plist": what an installation puts where, and
/// what uninstalling removes.
///
/// A manifest that has any fault is none: one line in the application's log says why, and the
/// functions return nothing. Immutable; any thread.
class QNInstallBOM {
  public:
    /// Gets each install entry before it is read, and returns the entry to read.
    using InstallResourceFilter = std::function<QVariantMap(const QVariantMap&)>;

    /// Where the manifest is; nothing if the bundle has none.
    [[nodiscard]] static std::optional<QUrl> BOMURLForBundle(const platform::Bundle& bundle);

    /// The manifest as it stands in the file; nothing if there is none, if it is a symbolic link or
    /// no regular file, or if it cannot be read or parsed.
    [[nodiscard]] static std::optional<QVariantMap>
    BOMDictionaryWithBundle(const platform::Bundle& bundle);

    [[nodiscard]] static std::optional<QNInstallBOM> BOMWithBundle(const platform::Bundle& bundle);

    /// The same, for listing what it installs: entries are marked with a true "ListingOnly".
    [[nodiscard]] static std::optional<QNInstallBOM>
    BOMInfoWithBundle(const platform::Bundle& bundle);

    /// `resourceRoot` is the folder that sources are relative to. An install entry without a
    /// destination goes into the default location, under the name of its source.
    [[nodiscard]] static std::optional<QNInstallBOM>
    BOMWithDictionary(const QVariantMap& dictionary, const QUrl& resourceRoot);
    [[nodiscard]] static std::optional<QNInstallBOM>
    BOMWithDictionary(const QVariantMap& dictionary, const QUrl& resourceRoot,
                      const InstallResourceFilter& filter);

    [[nodiscard]] const std::vector<QNInstallResource>& installResources() const noexcept {
        return installResources_;
    }
    [[nodiscard]] const std::vector<QNUninstallResource>& uninstallResources() const noexcept {
        return uninstallResources_;
    }
    [[nodiscard]] const std::optional<QUrl>& defaultLocation() const noexcept {
        return defaultLocation_;
    }

    /// Whether an installation first removes what an earlier one has left.
    [[nodiscard]] bool forceCleanInstall() const noexcept { return forceCleanInstall_; }

  private:
    QNInstallBOM() = default;
    void readInstall(const QVariantMap& section, const QUrl& resourceRoot,
                     const InstallResourceFilter& filter);
    void readUninstall(const QVariantMap& section);
    QVariantMap withDestination(QVariantMap entry) const;

    std::vector<QNInstallResource> installResources_;
    std::vector<QNUninstallResource> uninstallResources_;
    std::optional<QUrl> defaultLocation_;
    bool forceCleanInstall_ = false;
};
