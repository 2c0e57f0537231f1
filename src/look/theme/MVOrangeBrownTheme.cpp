#include "look/theme/MVOrangeBrownTheme.h"

#include "look/theme/LighterColor.h"
#include "platform/window/BundleImage.h"

#include <QPainter>
#include <QtMath>

namespace {

constexpr QSize patternStep(8, 6);
constexpr QSizeF speakerSize(20, 20);

QColor baseBrown() {
    return rgbColor(48 / 255.0, 39 / 255.0, 29 / 255.0);
}

QColor darkBrown() {
    return rgbColor(31 / 255.0, 25 / 255.0, 19 / 255.0);
}

/// A weave: two short threads that are a little lighter, each with a darker edge below.
QPixmap weave(qreal pixelRatio) {
    QPixmap cell(
        QSize(qCeil(patternStep.width() * pixelRatio), qCeil(patternStep.height() * pixelRatio)));
    cell.setDevicePixelRatio(pixelRatio);
    cell.fill(Qt::transparent);
    QPainter painter(&cell);
    const auto thread = [&](qreal x, qreal y) {
        painter.fillRect(QRectF(x, y, 4, 1), whiteColor(1.0, 0.035));
        painter.fillRect(QRectF(x, y + 1, 4, 1), whiteColor(0.0, 0.10));
    };
    thread(0, 0);
    thread(4, 3);
    return cell;
}

} // namespace

const MVOrangeBrownTheme& MVOrangeBrownTheme::sharedTheme() {
    static const MVOrangeBrownTheme* const theme = new MVOrangeBrownTheme;
    return *theme;
}

QColor MVOrangeBrownTheme::collectionViewBackgroundColor1() const {
    return whiteColor(0.3, 0.0);
}

QColor MVOrangeBrownTheme::collectionViewBackgroundColor2() const {
    return whiteColor(0.0, 0.0);
}

QPixmap MVOrangeBrownTheme::collectionViewBackgroundPattern(qreal pixelRatio) const {
    if (pattern_.isNull() || !qFuzzyCompare(pattern_.devicePixelRatio(), pixelRatio))
        pattern_ = weave(pixelRatio);
    return pattern_;
}

std::optional<QColor> MVOrangeBrownTheme::collectionViewBackgroundPatternColor() const {
    return baseBrown();
}

QColor MVOrangeBrownTheme::scrollerTrackBackgroundColor() const {
    return darkBrown();
}

QColor MVOrangeBrownTheme::scrollerBackgroundGradientColor1() const {
    return lighterBy(darkBrown(), 0.05);
}

QColor MVOrangeBrownTheme::scrollerBackgroundGradientColor2() const {
    return lighterBy(darkBrown(), 0.025);
}

QColor MVOrangeBrownTheme::scrollerKnobGradientColor1() const {
    return lighterBy(darkBrown(), 0.1);
}

QColor MVOrangeBrownTheme::scrollerKnobGradientColor2() const {
    return lighterBy(darkBrown(), 0.025);
}

QColor MVOrangeBrownTheme::displayNameActivityColor() const {
    return rgbColor(1.0, 0.5, 0.0);
}

QColor MVOrangeBrownTheme::displayNameActivityMutedColor() const {
    return rgbColor(128 / 255.0, 65 / 255.0, 0.0);
}

QColor MVOrangeBrownTheme::displayNameNoActivityColor() const {
    return whiteColor(103 / 255.0);
}

QColor MVOrangeBrownTheme::windowTitleBarTextColor() const {
    return whiteColor(1.0);
}

QColor MVOrangeBrownTheme::windowTitleBarGradientColor1() const {
    return lighterBy(baseBrown(), 0.05);
}

QColor MVOrangeBrownTheme::windowTitleBarGradientColor2() const {
    return lighterBy(windowTitleBarGradientColor1(), 0.2);
}

QColor MVOrangeBrownTheme::aboutWindowBackgroundGradientStartColor() const {
    return scrollerTrackBackgroundColor();
}

QColor MVOrangeBrownTheme::aboutWindowBackgroundGradientEndColor() const {
    return lighterBy(scrollerTrackBackgroundColor(), 0.3);
}

QImage MVOrangeBrownTheme::muteOffImage(bool /*hasActivity*/, qreal pixelRatio) const {
    return platform::bundleImage(QStringLiteral("speaker.pdf"), speakerSize, pixelRatio);
}

QImage MVOrangeBrownTheme::muteOnImage(bool hasActivity, qreal pixelRatio) const {
    QImage image = muteOffImage(hasActivity, pixelRatio);
    if (image.isNull())
        return image;
    constexpr QLineF strike(2.5, 17.5, 17.5, 2.5);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setCompositionMode(QPainter::CompositionMode_DestinationOut);
    painter.setPen(QPen(Qt::black, 5, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(strike);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.setPen(QPen(whiteColor(0.75), 2, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(strike);
    return image;
}

std::optional<QColor> MVOrangeBrownTheme::muteFilters(bool muted, bool active) const {
    if (muted)
        return std::nullopt;
    return active ? rgbColor(1.0, 0.5, 0.0) : whiteColor(0.3);
}
