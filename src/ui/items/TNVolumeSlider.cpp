#include "ui/items/TNVolumeSlider.h"

#include "look/theme/CurrentTheme.h"
#include "look/theme/LighterColor.h"
#include "ui/items/PixmapCache.h"
#include "ui/items/SliderGeometry.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace {

constexpr double thickness = 12;
constexpr double barRadius = 5;
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
    if (const MVBlackTheme& theme = CurrentTheme::theme(); theme.isHighContrast()) {
        painter.fillPath(path, theme.sliderTrackTopBaseColor());
        painter.strokePath(path, QPen(theme.displayNameActivityColor(), 1.5));
        return;
    }
    painter.strokePath(path.translated(0, 1), QPen(whiteColor(1.0, 0.10), 1)); // the lit lower edge
    painter.fillPath(path, whiteColor(trackWhite));
    drawInnerShadow(painter, path, 1.5, 2);
    painter.strokePath(path, QPen(whiteColor(0.04), 1));
}

/// The key of a cached pixmap.
struct Look {
    int width;
    int height;
    qreal ratio;
    QRgb color; ///< of the level's bar; of a knob, its KnobLook; else 0
    unsigned theme = CurrentTheme::generation();
    bool operator==(const Look&) const = default;
};

enum class KnobLook : QRgb { usual = 1, underMouse, pressed };

/// The track and the bars at full length, shared by all sliders of a size, and the knobs.
PixmapCache<Look>& kept() {
    static auto* const pixmaps = new PixmapCache<Look>;
    return *pixmaps;
}

void drawPiece(QPainter& painter, const QPixmap& whole, const QRectF& place, const QPointF& from) {
    const qreal ratio = whole.devicePixelRatio();
    painter.drawPixmap(place, whole, QRectF(from * ratio, place.size() * ratio));
}

/// Lit from above left.
void drawBrightKnob(QPainter& painter, const QRectF& knob, KnobLook look) {
    QLinearGradient gradient(knob.topLeft(), knob.bottomRight());
    const double dim = look == KnobLook::pressed ? 0.88 : 1.0;
    gradient.setColorAt(0, whiteColor(253 / 255.0 * dim));
    gradient.setColorAt(1, whiteColor(172 / 255.0 * dim));
    painter.setPen(Qt::NoPen);
    painter.setBrush(gradient);
    if (const MVBlackTheme& theme = CurrentTheme::theme(); theme.isHighContrast()) {
        painter.fillRect(knob, theme.sliderTrackTopBaseColor()); // the end of the track too
        const double gap = look == KnobLook::usual ? 4 : 3; // with room for the focus around it
        painter.setBrush(theme.sliderKnobGradientColor1());
        painter.drawEllipse(knob.adjusted(gap, gap, -gap, -gap));
        return;
    }
    painter.drawEllipse(knob);
    if (look != KnobLook::underMouse)
        return;
    painter.setBrush(whiteColor(1.0, 0.45));
    painter.drawEllipse(knob);
}

} // namespace

void TNVolumeSlider::drawTrack(QPainter& painter) {
    const qreal ratio = devicePixelRatioF();
    const QRectF track = geometryOfParts().trackRect(thickness);
    painter.drawPixmap(0, 0,
                       kept().get({width(), height(), ratio, 0}, size(), ratio,
                                  [&](QPainter& picture) { drawEmptyTrack(picture, track); }));
    if (levelEnd() > 0)
        drawLevel(painter, track);
}

/// Of the bar at full length its start, and then its round end, both cut on whole device pixels.
void TNVolumeSlider::drawLevel(QPainter& painter, const QRectF& track) const {
    const qreal ratio = devicePixelRatioF();
    const SliderGeometry parts = geometryOfParts();
    const QColor color = levelColor();
    const QPixmap& bar =
        kept().get({width(), height(), ratio, color.rgba()}, size(), ratio,
                   [&](QPainter& picture) { drawFullLevel(picture, track, color); });
    const auto onPixel = [ratio](double place) { return std::round(place * ratio) / ratio; };
    const double length = parts.length();
    const double end = std::max(onPixel(levelEnd()), 1.0);
    const double middle = onPixel(std::max(end - barRadius - levelTip - 1, end / 2));
    const QRectF all(rect());
    const QRectF start = parts.piece(all, 0, middle);
    const QRectF round = parts.piece(all, middle, end);
    drawPiece(painter, bar, start, start.topLeft());
    drawPiece(painter, bar, round, parts.piece(all, length - (end - middle), length).topLeft());
}

void TNVolumeSlider::drawFullLevel(QPainter& painter, const QRectF& track,
                                   const QColor& color) const {
    QPainterPath clip;
    clip.addRoundedRect(track.adjusted(0.5, 0.5, -0.5, -0.5), thickness / 2, thickness / 2);
    painter.setClipPath(clip);
    const SliderGeometry parts = geometryOfParts();
    const auto barOfLength = [&](double length) {
        QPainterPath bar;
        bar.addRoundedRect(parts.piece(track, 0, length), barRadius, barRadius);
        return bar;
    };
    painter.fillPath(barOfLength(parts.length()), theme().levelTipColor());
    if (theme().isHighContrast()) {
        painter.fillPath(barOfLength(parts.length() - levelTip / 2),
                         theme().sliderTrackTopBaseColor());
        painter.fillPath(barOfLength(parts.length() - levelTip), color);
        return;
    }
    const QPainterPath bar = barOfLength(parts.length() - levelTipLine);
    fillTrackPath(painter, bar, color);
    painter.fillPath(bar, whiteColor(1.0, overlayWhite));
}

void TNVolumeSlider::drawKnob(QPainter& painter, const QRectF& rect) {
    constexpr int size = static_cast<int>(SliderGeometry::knobSize);
    const qreal ratio = devicePixelRatioF();
    const KnobLook look = isHighlighted()      ? KnobLook::pressed
                          : isKnobUnderMouse() ? KnobLook::underMouse
                                               : KnobLook::usual;
    painter.drawPixmap(rect.topLeft(),
                       kept().get({size, size, ratio, static_cast<QRgb>(look)}, rect.size(), ratio,
                                  [&](QPainter& picture) {
                                      drawBrightKnob(picture, {QPointF(), rect.size()}, look);
                                  }));
}

void TNVolumeSlider::increment() {
    const float value = floatValue() + 0.1F;
    setSliderValue_(value < 1.0F ? value : 1.0F, true);
    update();
}

void TNVolumeSlider::decrement() {
    const float value = floatValue() - 0.1F;
    setSliderValue_(value > 0.0F ? value : 0.0F, true);
    update();
}
