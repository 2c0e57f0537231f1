#include "look/theme/HighContrastStyle.h"
#include "look/theme/HighContrastTheme.h"
#include "look/theme/LighterColor.h"
#include "look/theme/MVOrangeBrownTheme.h"
#include "platform/window/BundleImage.h"
#include "ui/TNMenuBarIcon.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QLineEdit>
#include <QRadioButton>
#include <QSpinBox>
#include <QStyleFactory>

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <vector>

namespace {

/// What is seen where `color` lies over `background`.
QColor over(const QColor& background, const QColor& color) {
    const double share = static_cast<double>(color.alphaF());
    const auto mixed = [share](float below, float above) {
        return static_cast<double>(below) * (1 - share) + static_cast<double>(above) * share;
    };
    return rgbColor(mixed(background.redF(), color.redF()),
                    mixed(background.greenF(), color.greenF()),
                    mixed(background.blueF(), color.blueF()));
}

/// Of a colour on each of the backgrounds the least.
double leastContrast(const QColor& color, const std::vector<QColor>& backgrounds) {
    double least = 21;
    for (const QColor& each : backgrounds)
        least = std::min(least, HighContrastTheme::contrast(over(each, color), each));
    return least;
}

/// All that a row may have behind its parts: with the mouse on it, pressed, and the current one.
std::vector<QColor> rowBackgrounds(const MVBlackTheme& theme) {
    std::vector<QColor> backgrounds;
    const QColor base = theme.collectionViewBackgroundPatternColor().value_or(Qt::black);
    for (const QColor& row :
         {theme.collectionViewBackgroundColor1(), theme.collectionViewBackgroundColor2()}) {
        QColor light = theme.rowLightColor();
        backgrounds.push_back(over(base, row));
        light.setAlphaF(light.alphaF() * 2.6F);
        backgrounds.push_back(over(backgrounds.back(), light));
    }
    return backgrounds;
}

/// The black one, the one in use, and that of high contrast on desktops of several colours.
std::vector<std::unique_ptr<MVBlackTheme>> allThemes() {
    std::vector<std::unique_ptr<MVBlackTheme>> themes;
    themes.push_back(std::make_unique<MVBlackTheme>());
    themes.push_back(std::make_unique<MVOrangeBrownTheme>());
    for (const auto& [base, text] : {std::pair(Qt::white, Qt::black),
                                     {Qt::black, Qt::white},
                                     {Qt::darkGray, Qt::lightGray},
                                     {Qt::darkBlue, Qt::yellow}}) {
        QPalette palette;
        palette.setColor(QPalette::Base, base);
        palette.setColor(QPalette::Text, text);
        themes.push_back(std::make_unique<HighContrastTheme>(palette));
    }
    return themes;
}

} // namespace

TEST(LighterColor, MixesWithWhiteAndKeepsTheAlpha) {
    const QColor color = lighterBy(rgbColor(0.5, 0.0, 1.0, 0.25), 0.5);
    EXPECT_NEAR(color.redF(), 0.75F, 1e-3);
    EXPECT_NEAR(color.greenF(), 0.5F, 1e-3);
    EXPECT_NEAR(color.blueF(), 1.0F, 1e-3);
    EXPECT_NEAR(color.alphaF(), 0.25F, 1e-3);
    EXPECT_EQ(lighterBy(whiteColor(0.2), -1), whiteColor(0.2));
    EXPECT_EQ(lighterBy(whiteColor(0.2), 2), whiteColor(1.0));
}

TEST(Themes, WhatIsAddedToTheirColoursCanBeRead) {
    int number = 0;
    for (const auto& theme : allThemes()) {
        SCOPED_TRACE(number++);
        const auto rows = rowBackgrounds(*theme);
        EXPECT_GE(leastContrast(theme->detailColor(), rows), 4.5);
        EXPECT_GE(leastContrast(theme->displayNameActivityColor(), rows), 4.5) << "of the sign";
        EXPECT_GE(leastContrast(theme->detailBrightColor(), rows),
                  leastContrast(theme->detailColor(), rows));
        EXPECT_GE(leastContrast(theme->rowFrameColor(), rows), 3);
        std::vector<QColor> besideTip{theme->sliderTrackTopBaseColor()}; // also in a gap
        if (!theme->isHighContrast()) {
            besideTip = {whiteColor(0.15)};
            for (const QColor& bar : {theme->sliderTrackBottomActivityBaseColor(),
                                      theme->sliderTrackBottomActivityMutedBaseColor()})
                besideTip.insert(besideTip.end(), {bar, lighterBy(bar, 0.23)});
        }
        EXPECT_GE(leastContrast(theme->levelTipColor(), besideTip), 3);
        const std::vector<QColor> scroller{theme->scrollerBackgroundGradientColor1(),
                                           theme->scrollerBackgroundGradientColor2()};
        for (const bool isUnderMouse : {true, false})
            EXPECT_GE(leastContrast(theme->scrollerKnobEdgeColor(isUnderMouse), scroller), 3);
        for (const QColor& tile : theme->letterTileColors())
            EXPECT_GE(leastContrast(theme->windowTitleBarTextColor(), {tile}), 4.5) << tile.hue();
        if (!theme->isHighContrast())
            continue;
        for (const QColor& name :
             {theme->displayNameNoActivityColor(), theme->displayNameActivityMutedColor(),
              theme->displayNameActivityColor(), theme->detailColor()})
            EXPECT_GE(leastContrast(name, rows), 7);
    }
}

TEST(BundleIcon, IsDrawnAnewForEverySize) {
    const QIcon icon = platform::bundleIcon("soundEffects.icns");
    for (const int size : {13, 48, 100}) {
        EXPECT_EQ(icon.pixmap(QSize(size, size), 1.0).size(), QSize(size, size));
        const QPixmap dense = icon.pixmap(QSize(size, size), 2.0);
        EXPECT_EQ(dense.toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied),
                  platform::bundleImage("soundEffects", QSizeF(size, size), 2.0));
        EXPECT_EQ(dense.deviceIndependentSize(), QSizeF(size, size));
    }
    EXPECT_TRUE(platform::bundleIcon("nothing").isNull());
}

TEST(HighContrastTheme, HasTheDesktopsColoursWhereTheyAreFarEnoughFromEachOther) {
    EXPECT_NEAR(HighContrastTheme::contrast(Qt::black, Qt::white), 21, 1e-6);
    EXPECT_NEAR(HighContrastTheme::contrast(Qt::red, Qt::red), 1, 1e-6);
    QPalette palette;
    palette.setColor(QPalette::Base, Qt::white);
    palette.setColor(QPalette::Text, QColor(0, 0, 80));
    palette.setColor(QPalette::Highlight, Qt::yellow);
    const HighContrastTheme good(palette);
    EXPECT_EQ(good.collectionViewBackgroundColor1(), QColor(Qt::white));
    EXPECT_EQ(good.displayNameNoActivityColor(), QColor(0, 0, 80));
    EXPECT_EQ(good.sliderTrackBottomActivityBaseColor(), QColor(0, 0, 80)) << "not yellow on white";
    palette.setColor(QPalette::Text, Qt::lightGray);
    const HighContrastTheme bad(palette);
    EXPECT_EQ(bad.collectionViewBackgroundColor1(), QColor(Qt::black));
    EXPECT_EQ(bad.displayNameNoActivityColor(), QColor(Qt::white));
    EXPECT_EQ(bad.sliderTrackBottomActivityBaseColor(), QColor(Qt::yellow));
}

/// Other styles draw what stands around them in a shade of the window's colour.
TEST(HighContrastStyle, OutlinesWhatIsFilledInOnABlackWindow) {
    QPalette palette(Qt::white, Qt::black);
    palette.setColor(QPalette::Base, Qt::black);
    QCheckBox box;
    QRadioButton choice;
    QLineEdit field;
    QSpinBox number;
    const auto isOutlined = [&](QWidget& widget, QStyle& style) {
        widget.setPalette(palette);
        widget.setStyle(&style);
        const QImage image = widget.grab().toImage();
        int lightest = 0;
        for (int x = 0; x < 4; ++x)
            lightest = std::max(lightest, image.pixelColor(x, image.height() / 2).lightness());
        return lightest > 128;
    };
    const std::unique_ptr<QStyle> usual(QStyleFactory::create("fusion"));
    HighContrastStyle style("fusion");
    for (QWidget* const each : std::initializer_list<QWidget*>{&box, &choice, &field, &number}) {
        EXPECT_FALSE(isOutlined(*each, *usual)) << each->metaObject()->className();
        EXPECT_TRUE(isOutlined(*each, style)) << each->metaObject()->className();
    }
}

TEST(HighContrastTheme, TellsMutedPlayingAndSilentByShape) {
    const HighContrastTheme theme{QPalette()};
    const QImage playing = theme.muteOffImage(true, 2.0);
    const QImage silent = theme.muteOffImage(false, 2.0);
    EXPECT_EQ(playing.size(), QSize(40, 40));
    EXPECT_EQ(silent.size(), playing.size());
    EXPECT_NE(silent, playing);
    EXPECT_EQ(silent.copy(0, 0, 20, 40), playing.copy(0, 0, 20, 40)) << "the speaker";
    for (const bool isActive : {true, false}) {
        EXPECT_EQ(theme.muteOnImage(isActive, 2.0).size(), playing.size());
        EXPECT_NE(theme.muteOnImage(isActive, 2.0), theme.muteOffImage(isActive, 2.0));
    }
}

TEST(MenuBarIcon, HasASharpImageForEachScreen) {
    for (const auto& make : {&TNMenuBarIcon::colorIcon, &TNMenuBarIcon::grayscaleIcon,
                             &TNMenuBarIcon::alternativeIcon}) {
        const QIcon icon = make();
        ASSERT_FALSE(icon.isNull());
        EXPECT_EQ(icon.pixmap(QSize(19, 19), 1.0).size(), QSize(19, 19));
        EXPECT_EQ(icon.pixmap(QSize(19, 19), 2.0).size(), QSize(38, 38));
    }
}
