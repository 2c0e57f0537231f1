#include "platform/desktop/ProgramIcons.h"

#include "support/PrivateFolder.h"

#include <gtest/gtest.h>

#include <QImage>

#include <filesystem>
#include <fstream>

namespace {

QImage pictureOf(const QIcon& icon, int size, qreal ratio = 1) {
    return icon.pixmap(QSize(size, size), ratio).toImage();
}

QColor middleOf(const QIcon& icon) {
    const QImage image = pictureOf(icon, 32);
    return image.isNull() ? QColor(Qt::transparent) : image.pixelColor(image.rect().center());
}

class ProgramIconsTest : public testing::Test {
  public:
    ~ProgramIconsTest() override {
        QIcon::setThemeSearchPaths(searchPaths_);
        QIcon::setThemeName(themeName_);
    }

  protected:
    ProgramIconsTest() {
        const auto folder = folder_.path() / "ours" / "apps";
        std::filesystem::create_directories(folder);
        std::ofstream(folder.parent_path() / "index.theme")
            << "[Icon Theme]\nName=x\nDirectories=apps\n[apps]\nSize=32\nType=Scalable\n"
               "MinSize=8\nMaxSize=512\n";
        paint(folder / "org.example.Player.png", Qt::red);
        paint(folder / "player.png", Qt::green);
        paint(folder_.path() / "own.png", Qt::blue);
        std::ofstream(folder / "damaged.png") << "no picture";
        QIcon::setThemeSearchPaths({QString::fromStdString(folder_.path())});
        QIcon::setThemeName("ours");
        icons_.setTileColors({Qt::yellow, Qt::black});
    }

    static void paint(const std::string& file, QColor color) {
        QImage image(32, 32, QImage::Format_ARGB32);
        image.fill(color);
        ASSERT_TRUE(image.save(QString::fromStdString(file)));
    }

    const QStringList searchPaths_ = QIcon::themeSearchPaths();
    const QString themeName_ = QIcon::themeName();
    const support::PrivateFolder folder_;
    platform::ProgramIcons icons_;
};

} // namespace

TEST_F(ProgramIconsTest, TheEntrysIconComesBeforeThatOfTheExecutable) {
    const QString own = QString::fromStdString(folder_.path() / "own.png");
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
}
