#include "look/theme/HighContrastStyle.h"
#include "look/theme/HighContrastTheme.h"
#include "look/theme/LighterColor.h"
#include "platform/window/BundleImage.h"
#include "ui/TNMenuBarIcon.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QLineEdit>
#include <QRadioButton>
#include <QSpinBox>
#include <QStyleFactory>

TEST(LighterColor, MixesWithWhiteAndKeepsTheAlpha) {
    const QColor color = lighterBy(rgbColor(0.5, 0.0, 1.0, 0.25), 0.5);
    EXPECT_NEAR(color.redF(), 0.75F, 1e-3);
    EXPECT_NEAR(color.greenF(), 0.5F, 1e-3);
    EXPECT_NEAR(color.blueF(), 1.0F, 1e-3);
    EXPECT_NEAR(color.alphaF(), 0.25F, 1e-3);
    EXPECT_EQ(lighterBy(whiteColor(0.2), -1), whiteColor(0.2));
    EXPECT_EQ(lighterBy(whiteColor(0.2), 2), whiteColor(1.0));
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
