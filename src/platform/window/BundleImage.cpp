#include "platform/window/BundleImage.h"

#include "platform/base/SystemLog.h"
#include "platform/bundle/Bundle.h"

#include <QIconEngine>
#include <QImageReader>
#include <QPainter>
#include <QPixmap>
#include <QSet>
#include <QSvgRenderer>

#include <utility>

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

/// Draws the image anew for each size that is asked for, and keeps the last one.
class BundleIconEngine final : public QIconEngine {
  public:
    explicit BundleIconEngine(QString name) : name_(std::move(name)) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode,
               QIcon::State state) override {
        const qreal ratio = painter->device()->devicePixelRatioF();
        painter->drawPixmap(rect, pixmap((QSizeF(rect.size()) * ratio).toSize(), mode, state));
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode /*mode*/, QIcon::State /*state*/) override {
        if (kept_.size() != size)
            kept_ = QPixmap::fromImage(bundleImage(name_, size, 1.0));
        return kept_;
    }

    QIconEngine* clone() const override { return new BundleIconEngine(name_); }

  private:
    const QString name_;
    QPixmap kept_;
};

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
    constexpr QSizeF trial(16, 16);
    return bundleImage(name, trial, 1.0).isNull() ? QIcon() : QIcon(new BundleIconEngine(name));
}

} // namespace platform
