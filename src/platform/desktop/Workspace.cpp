#include "platform/desktop/Workspace.h"

#include <QPainter>
#include <QPixmap>

namespace platform {

namespace {

constexpr int iconSizes[] = {16, 32, 64, 128};

/// A plain window, for a desktop without an icon theme.
QPixmap drawnApplication(int size) {
    const QColor frame(0x60, 0x68, 0x70);
    const QColor content(0xe8, 0xea, 0xec);
    const qreal unit = size / 16.0;
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(frame);
    painter.drawRoundedRect(QRectF(unit, 2 * unit, 14 * unit, 12 * unit), unit, unit);
    painter.fillRect(QRectF(2 * unit, 5 * unit, 12 * unit, 8 * unit), content);
    return pixmap;
}

QIcon drawnApplicationIcon() {
    QIcon icon;
    for (const int size : iconSizes)
        icon.addPixmap(drawnApplication(size));
    return icon;
}

class DesktopWorkspace final : public Workspace {
  public:
    QList<RunningApplication> runningApplications() const override { return {}; }

    QIcon iconForPath(const QString& /*path*/) const override { return genericApplicationIcon(); }

    QIcon genericApplicationIcon() const override {
        const QIcon themed = QIcon::fromTheme(QStringLiteral("application-x-executable"));
        // A theme may name a file that is damaged or of a format without a reader.
        return themed.pixmap(iconSizes[1]).isNull() ? drawnApplicationIcon() : themed;
    }
};

} // namespace

Workspace& Workspace::shared() {
    static auto& workspace = *new DesktopWorkspace;
    return workspace;
}

} // namespace platform
