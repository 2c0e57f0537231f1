#pragma once

#include "look/theme/MVBlackTheme.h"

/// The theme in use: orange on dark brown.
class MVOrangeBrownTheme final : public MVBlackTheme {
  public:
    /// Created on first use; never destroyed.
    static const MVOrangeBrownTheme& sharedTheme();

    QColor collectionViewBackgroundColor1() const override;
    QColor collectionViewBackgroundColor2() const override;
    QPixmap collectionViewBackgroundPattern(qreal pixelRatio) const override;
    std::optional<QColor> collectionViewBackgroundPatternColor() const override;
    QColor scrollerTrackBackgroundColor() const override;
    QColor scrollerBackgroundGradientColor1() const override;
    QColor scrollerBackgroundGradientColor2() const override;
    QColor scrollerKnobGradientColor1() const override;
    QColor scrollerKnobGradientColor2() const override;
    QColor displayNameActivityColor() const override;
    QColor displayNameActivityMutedColor() const override;
    QColor displayNameNoActivityColor() const override;
    QColor windowTitleBarTextColor() const override;
    QColor windowTitleBarGradientColor1() const override;
    QColor windowTitleBarGradientColor2() const override;
    QColor aboutWindowBackgroundGradientStartColor() const override;
    QColor aboutWindowBackgroundGradientEndColor() const override;
    QImage muteOffImage(bool hasActivity, qreal pixelRatio) const override;
    QImage muteOnImage(bool hasActivity, qreal pixelRatio) const override;
    std::optional<QColor> muteFilters(bool muted, bool active) const override;

  private:
    mutable QPixmap pattern_; // for the ratio that was asked for last
};
