#include "look/theme/HighContrastTheme.h"

#include "look/theme/LighterColor.h"
#include "look/theme/MVOrangeBrownTheme.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {

constexpr double enoughForText = 7;
constexpr double enoughForShapes = 3;

double linear(double component) {
    return component <= 0.04045 ? component / 12.92 : std::pow((component + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& color) {
    return 0.2126 * linear(static_cast<double>(color.redF())) +
           0.7152 * linear(static_cast<double>(color.greenF())) +
           0.0722 * linear(static_cast<double>(color.blueF()));
}

} // namespace

double HighContrastTheme::contrast(const QColor& first, const QColor& second) {
    const auto [less, more] = std::minmax({luminance(first), luminance(second)});
    return (more + 0.05) / (less + 0.05);
}

HighContrastTheme::HighContrastTheme(const QPalette& palette)
    : background_(palette.color(QPalette::Base))
    , text_(palette.color(QPalette::Text))
    , mark_(palette.color(QPalette::Highlight)) {
    if (contrast(background_, text_) < enoughForText) {
        background_ = whiteColor(0.0);
        text_ = whiteColor(1.0);
    }
    if (contrast(background_, mark_) < enoughForShapes)
        mark_ = text_;
}

QColor HighContrastTheme::collectionViewBackgroundColor1() const {
    return background_;
}

QColor HighContrastTheme::collectionViewBackgroundColor2() const {
    return background_;
}

std::optional<QColor> HighContrastTheme::collectionViewBackgroundPatternColor() const {
    return background_;
}

QColor HighContrastTheme::scrollerTrackBackgroundColor() const {
    return background_;
}

QColor HighContrastTheme::scrollerBackgroundGradientColor1() const {
    return background_;
}

QColor HighContrastTheme::scrollerBackgroundGradientColor2() const {
    return background_;
}

QColor HighContrastTheme::scrollerKnobGradientColor1() const {
    return text_;
}

QColor HighContrastTheme::scrollerKnobGradientColor2() const {
    return text_;
}

QColor HighContrastTheme::displayNameActivityColor() const {
    return text_;
}

QColor HighContrastTheme::displayNameNoActivityColor() const {
    return text_;
}

QColor HighContrastTheme::windowTitleBarTextColor() const {
    return text_;
}

QColor HighContrastTheme::windowTitleBarGradientColor1() const {
    return background_;
}

/// Also the line around the window.
QColor HighContrastTheme::windowTitleBarGradientColor2() const {
    return background_;
}

QColor HighContrastTheme::sliderTrackTopBaseColor() const {
    return background_;
}

QColor HighContrastTheme::sliderTrackBottomActivityBaseColor() const {
    return mark_;
}

QColor HighContrastTheme::sliderTrackBottomActivityMutedBaseColor() const {
    return mark_;
}

QColor HighContrastTheme::sliderKnobGradientColor1() const {
    return text_;
}

QColor HighContrastTheme::detailColor() const {
    return text_;
}

QColor HighContrastTheme::detailBrightColor() const {
    return text_;
}

QColor HighContrastTheme::rowLightColor() const {
    return Qt::transparent;
}

QColor HighContrastTheme::rowFrameColor() const {
    return text_;
}

QColor HighContrastTheme::levelTipColor() const {
    return text_;
}

QColor HighContrastTheme::scrollerKnobEdgeColor(bool /*isUnderMouse*/) const {
    return text_;
}

/// The background's, which is also that of the tile's surroundings.
QList<QColor> HighContrastTheme::letterTileColors() const {
    return {};
}

QColor HighContrastTheme::aboutWindowBackgroundGradientStartColor() const {
    return background_;
}

QColor HighContrastTheme::aboutWindowBackgroundGradientEndColor() const {
    return background_;
}

/// A silent one gives out no waves, since colours do not tell it.
QImage HighContrastTheme::muteOffImage(bool hasActivity, qreal pixelRatio) const {
    QImage image = MVOrangeBrownTheme::sharedTheme().muteOffImage(hasActivity, pixelRatio);
    if (hasActivity || image.isNull())
        return image;
    constexpr double endOfSpeaker = 0.56; // of the width
    QRectF waves(QPointF(), image.deviceIndependentSize());
    waves.setLeft(waves.width() * endOfSpeaker);
    QPainter painter(&image);
    painter.setCompositionMode(QPainter::CompositionMode_Clear);
    painter.fillRect(waves, Qt::black);
    return image;
}

/// Struck through, in one colour.
QImage HighContrastTheme::muteOnImage(bool hasActivity, qreal pixelRatio) const {
    return MVOrangeBrownTheme::sharedTheme().muteOnImage(hasActivity, pixelRatio);
}

std::optional<QColor> HighContrastTheme::muteFilters(bool /*muted*/, bool /*active*/) const {
    return text_;
}
