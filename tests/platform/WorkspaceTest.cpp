#include "platform/desktop/Workspace.h"

#include "support/PrivateFolder.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QImage>

#include <filesystem>
#include <fstream>

namespace {

QColor middleOf(const QIcon& icon, int size) {
    const QImage image = icon.pixmap(size).toImage();
    return image.isNull() ? QColor(Qt::transparent) : image.pixelColor(image.rect().center());
}

class WorkspaceTest : public testing::Test {
  public:
    ~WorkspaceTest() override {
        QIcon::setThemeSearchPaths(searchPaths_);
        QIcon::setThemeName(themeName_);
    }

  protected:
    WorkspaceTest() { QIcon::setThemeSearchPaths({QString::fromStdString(folder_.path())}); }

    /// A theme with the generic icon, and uses it.
    std::string makeTheme(const char* name) const {
        const auto folder = folder_.path() / name / "apps";
        std::filesystem::create_directories(folder);
        std::ofstream(folder.parent_path() / "index.theme")
            << "[Icon Theme]\nName=x\nDirectories=apps\n[apps]\nSize=32\nType=Scalable\n"
               "MinSize=8\nMaxSize=512\n";
        std::string file = folder / "application-x-executable.png";
        QImage image(32, 32, QImage::Format_ARGB32);
        image.fill(Qt::red);
        EXPECT_TRUE(image.save(QString::fromStdString(file)));
        return file;
    }

    const QStringList searchPaths_ = QIcon::themeSearchPaths();
    const QString themeName_ = QIcon::themeName();
    const support::PrivateFolder folder_;
};

} // namespace

TEST_F(WorkspaceTest, TheGenericIconIsTheThemes) {
    makeTheme("ours");
    QIcon::setThemeName("ours");
    EXPECT_EQ(middleOf(platform::Workspace::shared().genericApplicationIcon(), 32), Qt::red);
}

TEST_F(WorkspaceTest, ThereIsAnIconWhateverTheThemeLacks) {
    std::ofstream(makeTheme("damaged")) << "no picture";
    const platform::Workspace& workspace = platform::Workspace::shared();
    for (const char* const theme : {"damaged", "missing", ""}) {
        SCOPED_TRACE(theme);
        QIcon::setThemeName(theme);
        for (const QIcon& icon :
             {workspace.genericApplicationIcon(), workspace.iconForPath("/no/such/program"),
              workspace.iconForPath("")}) {
            for (const int size : {16, 32, 128})
                EXPECT_EQ(middleOf(icon, size).alpha(), 255) << size;
        }
    }
}
