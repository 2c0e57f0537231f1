#pragma once

#include <QColor>
#include <QImage>
#include <QList>
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
    [[nodiscard]] virtual bool isHighContrast() const { return false; }

    /// How much lighter the grid is while its window is inactive: an amount for lighterBy().
    [[nodiscard]] virtual double windowNonKeyLightenBy() const;

    /// Alternating colours of the grid's rows, drawn over the pattern, which is drawn over its
    /// colour.
    [[nodiscard]] virtual QColor collectionViewBackgroundColor1() const;
    [[nodiscard]] virtual QColor collectionViewBackgroundColor2() const;
    /// The tile that is repeated over the grid; null for no pattern.
    [[nodiscard]] virtual QPixmap collectionViewBackgroundPattern(qreal pixelRatio) const;
    [[nodiscard]] virtual std::optional<QColor> collectionViewBackgroundPatternColor() const;

    [[nodiscard]] virtual QColor scrollerTrackBackgroundColor() const;
    [[nodiscard]] virtual QColor scrollerBackgroundGradientColor1() const;
    [[nodiscard]] virtual QColor scrollerBackgroundGradientColor2() const;
    [[nodiscard]] virtual QColor scrollerKnobGradientColor1() const;
    [[nodiscard]] virtual QColor scrollerKnobGradientColor2() const;

    [[nodiscard]] virtual QColor displayNameActivityColor() const;
    [[nodiscard]] virtual QColor displayNameActivityMutedColor() const;
    [[nodiscard]] virtual QColor displayNameNoActivityColor() const;

    [[nodiscard]] virtual QColor windowTitleBarTextColor() const;
    [[nodiscard]] virtual QColor windowTitleBarGradientColor1() const;
    [[nodiscard]] virtual QColor windowTitleBarGradientColor2() const;

    [[nodiscard]] virtual QColor sliderTrackTopBaseColor() const;
    [[nodiscard]] virtual QColor sliderTrackTopActivityBaseColor() const;
    [[nodiscard]] virtual QColor sliderTrackBottomBaseColor() const;
    [[nodiscard]] virtual QColor sliderTrackBottomActivityBaseColor() const;
    [[nodiscard]] virtual QColor sliderTrackBottomActivityMutedBaseColor() const;
    [[nodiscard]] virtual QColor sliderKnobShadowColor() const;
    [[nodiscard]] virtual QColor sliderKnobGradientColor1() const;
    [[nodiscard]] virtual QColor sliderKnobGradientColor2() const;
    [[nodiscard]] virtual QColor sliderKnobGradientColor1Highlighted() const;
    [[nodiscard]] virtual QColor sliderKnobGradientColor2Highlighted() const;

    /// Figures and words beside a name: at least 4.5 to 1 on a row, and brighter while they change
    /// or their row has the mouse or the focus.
    [[nodiscard]] virtual QColor detailColor() const;
    [[nodiscard]] virtual QColor detailBrightColor() const;
    /// Lies over a row that the mouse is on, and over the current one; with more strength, up
    /// to 2.6 times, where several is true, or it is pressed. Invisible for none.
    [[nodiscard]] virtual QColor rowLightColor() const;
    /// The frame of such a row; that of the row with the focus has displayNameActivityColor(). This
    /// and the following lines are at least 3 to 1 on what lies beside them.
    [[nodiscard]] virtual QColor rowFrameColor() const;
    [[nodiscard]] virtual QColor levelTipColor() const;
    [[nodiscard]] virtual QColor scrollerKnobEdgeColor(bool isUnderMouse) const;
    /// The colours of the tiles that stand for missing icons, under windowTitleBarTextColor().
    [[nodiscard]] virtual QList<QColor> letterTileColors() const;

    [[nodiscard]] virtual QColor aboutWindowBackgroundGradientStartColor() const;
    [[nodiscard]] virtual QColor aboutWindowBackgroundGradientEndColor() const;

    /// The mute button's image. Null if the bundle has no speaker image.
    [[nodiscard]] virtual QImage muteOffImage(bool hasActivity, qreal pixelRatio) const;
    [[nodiscard]] virtual QImage muteOnImage(bool hasActivity, qreal pixelRatio) const;
    /// The colour of its opaque parts; none for the image's own colours.
    [[nodiscard]] virtual std::optional<QColor> muteFilters(bool muted, bool active) const;
};
