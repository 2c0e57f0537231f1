#include "look/theme/MVBlackTheme.h"

#include "look/theme/LighterColor.h"
#include "platform/window/BundleImage.h"

#include <QPainter>

namespace {

constexpr QSizeF speakerSize(24, 24);

} // namespace

double MVBlackTheme::windowNonKeyLightenBy() const {
    return 0.0;
}

QColor MVBlackTheme::collectionViewBackgroundColor1() const {
    return whiteColor(0.1);
}

QColor MVBlackTheme::collectionViewBackgroundColor2() const {
    return whiteColor(0.125);
}

QPixmap MVBlackTheme::collectionViewBackgroundPattern(qreal /*pixelRatio*/) const {
    return {};
}

std::optional<QColor> MVBlackTheme::collectionViewBackgroundPatternColor() const {
    return std::nullopt;
}

QColor MVBlackTheme::scrollerTrackBackgroundColor() const {
    return whiteColor(0.8, 0.0);
}

QColor MVBlackTheme::scrollerBackgroundGradientColor1() const {
    return whiteColor(0.15);
}

QColor MVBlackTheme::scrollerBackgroundGradientColor2() const {
    return whiteColor(0.05);
}

QColor MVBlackTheme::scrollerKnobGradientColor1() const {
    return whiteColor(0.2);
}

QColor MVBlackTheme::scrollerKnobGradientColor2() const {
    return whiteColor(0.1);
}

QColor MVBlackTheme::displayNameActivityColor() const {
    return whiteColor(1.0);
}

QColor MVBlackTheme::displayNameActivityMutedColor() const {
    return displayNameActivityColor();
}

QColor MVBlackTheme::displayNameNoActivityColor() const {
    return whiteColor(0.5);
}

QColor MVBlackTheme::windowTitleBarTextColor() const {
    return whiteColor(1.0);
}

QColor MVBlackTheme::windowTitleBarGradientColor1() const {
    return whiteColor(0.2);
}

QColor MVBlackTheme::windowTitleBarGradientColor2() const {
    return whiteColor(0.4);
}

QColor MVBlackTheme::sliderTrackTopBaseColor() const {
    return whiteColor(0.2);
}

QColor MVBlackTheme::sliderTrackTopActivityBaseColor() const {
    return whiteColor(0.5);
}

QColor MVBlackTheme::sliderTrackBottomBaseColor() const {
    return whiteColor(0.2);
}

QColor MVBlackTheme::sliderTrackBottomActivityBaseColor() const {
    return rgbColor(84 / 255.0, 0.0, 100 / 255.0);
}

QColor MVBlackTheme::sliderTrackBottomActivityMutedBaseColor() const {
    return whiteColor(0.3);
}

QColor MVBlackTheme::sliderKnobShadowColor() const {
    return whiteColor(0.0);
}

QColor MVBlackTheme::sliderKnobGradientColor1() const {
    return whiteColor(0.3);
}

QColor MVBlackTheme::sliderKnobGradientColor2() const {
    return whiteColor(0.6);
}

QColor MVBlackTheme::sliderKnobGradientColor1Highlighted() const {
    return whiteColor(0.25);
}

QColor MVBlackTheme::sliderKnobGradientColor2Highlighted() const {
    return whiteColor(0.55);
}

QColor MVBlackTheme::detailColor() const {
    return whiteColor(1.0, 0.66);
}

QColor MVBlackTheme::detailBrightColor() const {
    return whiteColor(1.0);
}

QColor MVBlackTheme::rowLightColor() const {
    return whiteColor(1.0, 0.03);
}

QColor MVBlackTheme::rowFrameColor() const {
    return whiteColor(1.0, 0.42);
}

QColor MVBlackTheme::levelTipColor() const {
    return whiteColor(1.0, 0.85);
}

QColor MVBlackTheme::scrollerKnobEdgeColor(bool isUnderMouse) const {
    return lighterBy(scrollerKnobGradientColor1(), isUnderMouse ? 0.55 : 0.35);
}

/// Of one lightness and little colour, so that none stands out.
QList<QColor> MVBlackTheme::letterTileColors() const {
    constexpr int hues[] = {4, 26, 48, 84, 135, 172, 200, 224, 258, 288, 330};
    constexpr int saturation = 98;
    constexpr int value = 124;
    QList<QColor> colors;
    for (const int hue : hues)
        colors += QColor::fromHsv(hue, saturation, value);
    return colors;
}

QColor MVBlackTheme::aboutWindowBackgroundGradientStartColor() const {
    return whiteColor(0.6);
}

QColor MVBlackTheme::aboutWindowBackgroundGradientEndColor() const {
    return whiteColor(1.0, 0.0);
}

QImage MVBlackTheme::muteOffImage(bool /*hasActivity*/, qreal pixelRatio) const {
    return platform::bundleImage(QStringLiteral("speaker.pdf"), speakerSize, pixelRatio);
}

QImage MVBlackTheme::muteOnImage(bool hasActivity, qreal pixelRatio) const {
    QImage image = muteOffImage(hasActivity, pixelRatio);
    if (image.isNull())
        return image;
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(rgbColor(1.0, 0.0, 0.0, 0.6), 2));
    const QRectF oval = QRectF(QPointF(), image.deviceIndependentSize()).adjusted(2, 2, -2, -2);
    painter.drawEllipse(oval);
    const QPointF reach = QPointF(oval.width(), oval.height()) / 2 * 0.7071;
    painter.drawLine(oval.center() - reach, oval.center() + reach);
    return image;
}

std::optional<QColor> MVBlackTheme::muteFilters(bool /*muted*/, bool /*active*/) const {
    return std::nullopt;
}
