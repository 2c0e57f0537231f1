#include "platform/desktop/BundleImage.h"

#include "platform/files/Bundle.h"
#include "platform/processes/SystemLog.h"

#include <QImageReader>
#include <QPainter>
#include <QSet>
#include <QSvgRenderer>

#include <algorithm>
#include <array>

namespace platform {

namespace {

void reportOnce(const QString& name) {
    static QSet<QString> reported;
    if (reported.contains(name))
        return;
    reported.insert(name);
    systemLog(LogPriority::error, "The image \"%s\" is missing or damaged", qUtf8Printable(name));
}

QImage emptyImage(const QSizeF& size, qreal pixelRatio) {
    QImage image((size * pixelRatio).toSize().expandedTo({1, 1}),
                 QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

bool drawFile(const QString& file, QImage& image) {
    QPainter painter(&image);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    if (file.endsWith(QLatin1String(".svg"))) {
        QSvgRenderer renderer(file);
        renderer.render(&painter, image.rect());
        return renderer.isValid();
    }
    const QImage picture = QImageReader(file).read();
    painter.drawImage(image.rect(), picture);
    return !picture.isNull();
}

} // namespace

QImage bundleImage(const QString& name, const QSizeF& size, qreal pixelRatio) {
    QImage image = emptyImage(size, pixelRatio);
    const QString file =
        QString::fromStdString(Bundle::main().resource(name.toStdString(), {".svg", ".png"}));
    if (file.isEmpty() || !drawFile(file, image)) {
        reportOnce(name);
        return {};
    }
    image.setDevicePixelRatio(pixelRatio);
    return image;
}

QIcon bundleIcon(const QString& name) {
    constexpr std::array sizes{16, 19, 22, 24, 32, 36, 38, 48, 64, 72, 96, 128, 256};
    QIcon icon;
    for (const int size : sizes) {
        const QImage image = bundleImage(name, QSizeF(size, size), 1.0);
        if (image.isNull())
            return {};
        icon.addPixmap(QPixmap::fromImage(image));
    }
    return icon;
}

} // namespace platform
