#include "ui/items/TNVolumeSlider.h"

#include "ui/items/SliderGeometry.h"
#include "ui/theme/LighterColor.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QPixmapCache>

namespace {

constexpr double thickness = 12;
constexpr double trackWhite = 0.15;
constexpr double overlayWhite = 0.08;

/// Strokes of growing width stand for the blur of a shadow that falls into `path` from above.
void drawInnerShadow(QPainter& painter, const QPainterPath& path, double offset, double blur) {
    constexpr int steps = 4;
    painter.save();
    painter.setClipPath(path);
    for (int step = 0; step < steps; ++step) {
        const double width = 2 * blur * (step + 1) / steps;
        painter.strokePath(path.translated(0, offset / 2), QPen(whiteColor(0.0, 0.22), width));
    }
    painter.restore();
}

void drawEmptyTrack(QPainter& painter, const QRectF& track) {
    const double radius = thickness / 2;
    QPainterPath path;
    path.addRoundedRect(track, radius, radius);
    painter.strokePath(path.translated(0, 1), QPen(whiteColor(1.0, 0.10), 1)); // the lit lower edge
    painter.fillPath(path, whiteColor(trackWhite));
    drawInnerShadow(painter, path, 1.5, 2);
    painter.strokePath(path, QPen(whiteColor(0.04), 1));
}

QPixmap keptPixmap(const QString& key, const QSize& size, qreal pixelRatio,
                   const std::function<void(QPainter&)>& draw) {
    QPixmap pixmap;
    if (QPixmapCache::find(key, &pixmap))
        return pixmap;
    pixmap = QPixmap((QSizeF(size) * pixelRatio).toSize());
    pixmap.setDevicePixelRatio(pixelRatio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    draw(painter);
    painter.end();
    QPixmapCache::insert(key, pixmap);
    return pixmap;
}

/// Lit from above left.
void drawBrightKnob(QPainter& painter, const QRectF& knob, bool isPressed) {
    QLinearGradient gradient(knob.topLeft(), knob.bottomRight());
    const double dim = isPressed ? 0.88 : 1.0;
    gradient.setColorAt(0, whiteColor(253 / 255.0 * dim));
    gradient.setColorAt(1, whiteColor(172 / 255.0 * dim));
    painter.setPen(Qt::NoPen);
    painter.setBrush(gradient);
    painter.drawEllipse(knob);
}

} // namespace

void TNVolumeSlider::drawTrack(QPainter& painter) {
    const SliderGeometry parts = geometryOfParts();
    const QRectF track = parts.trackRect(thickness);
    const qreal ratio = devicePixelRatioF();
    const QString key =
        QStringLiteral("TNVolumeSlider/%1x%2@%3").arg(width()).arg(height()).arg(ratio);
    painter.drawPixmap(0, 0, keptPixmap(key, size(), ratio, [&](QPainter& kept) {
                           drawEmptyTrack(kept, track);
                       }));
    if (!(activity() > 0))
        return;
    painter.save();
    QPainterPath clip;
    clip.addRoundedRect(track.adjusted(0.5, 0.5, -0.5, -0.5), thickness / 2, thickness / 2);
    painter.setClipPath(clip);
    const QPainterPath level = levelPath(track);
    fillTrackPath(painter, level, levelColor());
    painter.fillPath(level, whiteColor(1.0, overlayWhite));
    painter.restore();
}

void TNVolumeSlider::drawKnob(QPainter& painter, const QRectF& rect) {
    const qreal ratio = devicePixelRatioF();
    const QString key = QStringLiteral("TNVolumeSlider/knob%1@%2").arg(isHighlighted()).arg(ratio);
    const QRectF local(QPointF(), rect.size());
    const QPixmap knob =
        keptPixmap(key, local.size().toSize(), ratio,
                   [&](QPainter& kept) { drawBrightKnob(kept, local, isHighlighted()); });
    painter.drawPixmap(rect.topLeft(), knob);
}

void TNVolumeSlider::increment() {
    const float value = floatValue() + 0.1F;
    setSliderValue(value < 1.0F ? value : 1.0F, true);
    update();
}

void TNVolumeSlider::decrement() {
    const float value = floatValue() - 0.1F;
    setSliderValue(value > 0.0F ? value : 0.0F, true);
    update();
}
