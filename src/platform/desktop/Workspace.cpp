#include "platform/desktop/Workspace.h"

#include "platform/desktop/BundleImage.h"

#include <QPixmap>

namespace platform {

namespace {

/// For a desktop without an icon theme; nothing to see when the bundle lacks that too.
const QIcon& ownIcon() {
    static const auto& icon = *new QIcon([] {
        const QIcon drawn = bundleIcon(QStringLiteral("application.icns"));
        QPixmap blank(1, 1);
        blank.fill(Qt::transparent);
        return drawn.isNull() ? QIcon(blank) : drawn;
    }());
    return icon;
}

class DesktopWorkspace final : public Workspace {
  public:
    QList<RunningApplication> runningApplications() const override { return {}; }

    QIcon iconForPath(const QString& /*path*/) const override { return genericApplicationIcon(); }

    QIcon genericApplicationIcon() const override {
        const QIcon themed = QIcon::fromTheme(QStringLiteral("application-x-executable"));
        // A theme may name a file that is damaged or of a format without a reader.
        constexpr int trial = 32;
        return themed.pixmap(trial).isNull() ? ownIcon() : themed;
    }
};

} // namespace

Workspace& Workspace::shared() {
    static auto& workspace = *new DesktopWorkspace;
    return workspace;
}

} // namespace platform
