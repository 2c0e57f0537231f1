#include "workspace/ProgramIcons.h"

#include "IconTheme.h"

#include <QSet>

namespace {

QImage pictureOf(const QIcon& icon, int size, qreal ratio = 1) {
    return icon.pixmap(QSize(size, size), ratio).toImage();
}

QColor middleOf(const QIcon& icon) {
    const QImage image = pictureOf(icon, 32);
    return image.isNull() ? QColor(Qt::transparent) : image.pixelColor(image.rect().center());
}

class ProgramIconsTest : public testing::Test {
  protected:
    ProgramIconsTest() {
        theme_.add("org.example.Player", Qt::red);
        theme_.add("player", Qt::green);
        std::ofstream(theme_.icons() / "damaged.png") << "no picture";
        icons_.setTileColors({Qt::yellow, Qt::black});
    }

    const IconTheme theme_;
    ProgramIcons icons_;
};

} // namespace

TEST_F(ProgramIconsTest, TheEntrysIconComesBeforeThatOfTheExecutable) {
    const support::PrivateFolder folder;
    const QString own = QString::fromStdString(folder.path() / "own.png");
    std::filesystem::copy_file(theme_.add("elsewhere", Qt::blue), own.toStdString());
    EXPECT_EQ(middleOf(icons_.icon("org.example.Player", "/usr/bin/player", "P")), Qt::red);
    EXPECT_EQ(middleOf(icons_.icon("org.example.Player.png", "", "P")), Qt::red);
    EXPECT_EQ(middleOf(icons_.icon(own, "/usr/bin/player", "P")), Qt::blue);
    for (const char* const missing : {"", "missing", "damaged", "/missing.png", "../x"})
        EXPECT_EQ(middleOf(icons_.icon(missing, "/usr/bin/player", "P")), Qt::green) << missing;
    EXPECT_EQ(icons_.icon("", "", "P").cacheKey(), icons_.icon("", "", "P").cacheKey());
}

TEST_F(ProgramIconsTest, WhatHasNoIconHasATileWithItsLetterAtEverySizeAndScale) {
    const auto isTile = [](const QImage& image, int side) {
        return image.width() == side && image.pixelColor(side / 2, side / 8) == Qt::yellow &&
               image.pixelColor(0, 0).alpha() == 0;
    };
    for (const char* const name : {"", " ", "x", "Ärger", "播放器", "\u200b"}) {
        const QIcon icon = icons_.icon("damaged", "/no/such/program", name);
        ASSERT_FALSE(icon.isNull());
        for (const qreal ratio : {1.0, 1.5, 2.0})
            EXPECT_TRUE(isTile(pictureOf(icon, 32, ratio), qRound(32 * ratio))) << name << ratio;
    }
    const auto tile = [this](const char* name) { return pictureOf(icons_.icon("", "", name), 64); };
    EXPECT_EQ(tile("player"), tile("Pulse")) << "the same letter";
    EXPECT_EQ(tile("-- player"), tile("Pulse")) << "the first letter";
    EXPECT_NE(tile("player"), tile("xylophone"));
    icons_.setTileColors({Qt::yellow, Qt::black, {Qt::red, Qt::green, Qt::blue}});
    QList<QRgb> colors;
    for (const char* const name : {"player", "Pulse", "Palaver", "Pipes", "Pan", "player"})
        colors += tile(name).pixel(32, 8);
    EXPECT_EQ(colors.first(), colors.last()) << "by its name";
    EXPECT_GT(QSet<QRgb>(colors.begin(), colors.end()).size(), 1);
}
