#pragma once

#include <QColor>
#include <QImage>
#include <QPixmap>

#include <optional>

/// All colours, the pattern and the mute images of the volume window, so that its look can be
/// changed as a whole; a neutral dark one. Colours are sRGB. Images are as sharp as the ratio of
/// device pixels to pixels that they are asked for. The main thread only, with an application
/// object.
class MVBlackTheme {
  public:
    MVBlackTheme() = default;
    virtual ~MVBlackTheme() = default;
    MVBlackTheme(const MVBlackTheme&) = delete;
    MVBlackTheme& operator=(const MVBlackTheme&) = delete;

    /// Whether shapes are to be outlined, and nothing is to be told by shades.
    virtual bool isHighContrast() const { return false; }

    /// How much lighter the grid is while its window is not the active one: an amount for
    /// lighterBy().
    virtual double windowNonKeyLightenBy() const;

    /// Of the rows of the grid in turn, drawn over the pattern, and that over its colour.
    virtual QColor collectionViewBackgroundColor1() const;
    virtual QColor collectionViewBackgroundColor2() const;
    /// The cell that is repeated over the grid; null for no pattern.
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

    /// The mute button's image. Null when the bundle has no speaker.
    virtual QImage muteOffImage(bool hasActivity, qreal pixelRatio) const;
    virtual QImage muteOnImage(bool hasActivity, qreal pixelRatio) const;
    /// What its opaque parts are painted with; none for its own colours.
    virtual std::optional<QColor> muteFilters(bool muted, bool active) const;
};
