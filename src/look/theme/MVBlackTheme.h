#pragma once

#include <QColor>
#include <QImage>
#include <QPixmap>

#include <optional>

/// The base theme, neutral and dark: all colours, the pattern and the mute images of the volume
/// window. Colours are sRGB. Images are rendered for the given ratio of device pixels to pixels.
/// Main thread only, with an application object.
class MVBlackTheme {
  public:
    MVBlackTheme() = default;
    virtual ~MVBlackTheme() = default;
    MVBlackTheme(const MVBlackTheme&) = delete;
    MVBlackTheme& operator=(const MVBlackTheme&) = delete;

    /// Whether to draw outlines, and to avoid showing information by shades.
    virtual bool isHighContrast() const { return false; }

    /// How much lighter the grid is while its window is inactive: an amount for lighterBy().
    virtual double windowNonKeyLightenBy() const;

    /// Alternating colours of the grid's rows, drawn over the pattern, which is drawn over its
    /// colour.
    virtual QColor collectionViewBackgroundColor1() const;
    virtual QColor collectionViewBackgroundColor2() const;
    /// The tile that is repeated over the grid; null for no pattern.
    virtual QPixmap collectionViewBackgroundPattern(qreal pixelRatio) const;
    virtual std::optional<QColor> collectionViewBackgroundPatternColor() const;

    virtual QColor scrollerTrackBackgroundColor() const;
    virtual QColor scrollerBackgroundGradientColor1() const;
    virtual QColor scrollerBackgroundGradientColor2() const;
    virtual QColor scrollerKnobGradientColor1() const;
    virtual QColor scrollerKnobGradientColor2() const;

    virtual QColor displayNameActivityColor() const;
    virtual QColor displayNameActivityMutedColor() const;
    virtual QColor displayNameNoActivityColor() const;

    virtual QColor windowTitleBarTextColor() const;
    virtual QColor windowTitleBarGradientColor1() const;
    virtual QColor windowTitleBarGradientColor2() const;

    virtual QColor sliderTrackTopBaseColor() const;
    virtual QColor sliderTrackTopActivityBaseColor() const;
    virtual QColor sliderTrackBottomBaseColor() const;
    virtual QColor sliderTrackBottomActivityBaseColor() const;
    virtual QColor sliderTrackBottomActivityMutedBaseColor() const;
    virtual QColor sliderKnobShadowColor() const;
    virtual QColor sliderKnobGradientColor1() const;
    virtual QColor sliderKnobGradientColor2() const;
    virtual QColor sliderKnobGradientColor1Highlighted() const;
    virtual QColor sliderKnobGradientColor2Highlighted() const;

    virtual QColor aboutWindowBackgroundGradientStartColor() const;
    virtual QColor aboutWindowBackgroundGradientEndColor() const;

    /// The mute button's image. Null if the bundle has no speaker image.
    virtual QImage muteOffImage(bool hasActivity, qreal pixelRatio) const;
    virtual QImage muteOnImage(bool hasActivity, qreal pixelRatio) const;
    /// The colour of its opaque parts; none for the image's own colours.
    virtual std::optional<QColor> muteFilters(bool muted, bool active) const;
};
