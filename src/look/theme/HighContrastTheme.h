#pragma once

#include "look/theme/MVBlackTheme.h"

#include <QPalette>

/// The desktop's own colours: text, background and highlight. No information is shown by colour
/// alone. If the desktop's text has too little contrast, white on black.
class HighContrastTheme final : public MVBlackTheme {
  public:
    explicit HighContrastTheme(const QPalette& palette);

    /// The contrast ratio of two opaque colours, from 1 (equal) to 21 (black and white).
    static double contrast(const QColor& first, const QColor& second);

    bool isHighContrast() const override { return true; }
    QColor collectionViewBackgroundColor1() const override;
    QColor collectionViewBackgroundColor2() const override;
    std::optional<QColor> collectionViewBackgroundPatternColor() const override;
    QColor scrollerTrackBackgroundColor() const override;
    QColor scrollerBackgroundGradientColor1() const override;
    QColor scrollerBackgroundGradientColor2() const override;
    QColor scrollerKnobGradientColor1() const override;
    QColor scrollerKnobGradientColor2() const override;
    QColor displayNameActivityColor() const override;
    QColor displayNameNoActivityColor() const override;
    QColor windowTitleBarTextColor() const override;
    QColor windowTitleBarGradientColor1() const override;
    QColor windowTitleBarGradientColor2() const override;
    QColor sliderTrackTopBaseColor() const override;
    QColor sliderTrackBottomActivityBaseColor() const override;
    QColor sliderTrackBottomActivityMutedBaseColor() const override;
    QColor sliderKnobGradientColor1() const override;
    QColor detailColor() const override;
    QColor detailBrightColor() const override;
    QColor rowLightColor() const override;
    QColor rowFrameColor() const override;
    QColor levelTipColor() const override;
    QColor scrollerKnobEdgeColor(bool isUnderMouse) const override;
    QList<QColor> letterTileColors() const override;
    QColor aboutWindowBackgroundGradientStartColor() const override;
    QColor aboutWindowBackgroundGradientEndColor() const override;
    QImage muteOffImage(bool hasActivity, qreal pixelRatio) const override;
    QImage muteOnImage(bool hasActivity, qreal pixelRatio) const override;
    std::optional<QColor> muteFilters(bool muted, bool active) const override;

  private:
    QColor background_;
    QColor text_;
    QColor mark_;
};
