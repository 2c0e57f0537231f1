#pragma once

#include "support/PrivateFolder.h"

#include <gtest/gtest.h>

#include <QIcon>
#include <QImage>

#include <filesystem>
#include <fstream>
#include <string>

/// The icon theme while it lives, at first without an icon.
class IconTheme {
  public:
    IconTheme() {
        std::filesystem::create_directories(icons());
        std::ofstream(folder_.path() / "ours/index.theme")
            << "[Icon Theme]\nName=x\nDirectories=apps\n[apps]\nSize=32\nType=Scalable\n"
               "MinSize=8\nMaxSize=512\n";
        QIcon::setThemeSearchPaths({QString::fromStdString(folder_.path())});
        QIcon::setThemeName("ours");
    }
    ~IconTheme() {
        QIcon::setThemeSearchPaths(searchPaths_);
        QIcon::setThemeName(themeName_);
    }
    IconTheme(const IconTheme&) = delete;
    IconTheme& operator=(const IconTheme&) = delete;

    /// Where its files lie.
    std::filesystem::path icons() const { return folder_.path() / "ours/apps"; }

    /// Creates an icon of one color and returns its file.
    std::string add(const std::string& name, QColor color) const {
        std::string file = icons() / (name + ".png");
        QImage image(32, 32, QImage::Format_ARGB32);
        image.fill(color);
        EXPECT_TRUE(image.save(QString::fromStdString(file)));
        return file;
    }

  private:
    const QStringList searchPaths_ = QIcon::themeSearchPaths();
    const QString themeName_ = QIcon::themeName();
    const support::PrivateFolder folder_;
};
