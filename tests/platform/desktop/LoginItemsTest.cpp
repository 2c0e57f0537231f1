#include "platform/desktop/LoginItems.h"

#include "support/Files.h"
#include "support/PrivateFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;
using platform::LoginItem;
using platform::LoginItems;

namespace {

/// A bundle and two folders of entries.
class LoginItemsTest : public testing::Test {
  protected:
    LoginItemsTest() {
        write(bundle_ / "Contents/Info.plist",
              "<plist><dict><key>CFBundleIdentifier</key><string>org.example.Player</string>"
              "<key>CFBundleName</key><string>Player</string>"
              "<key>CFBundleExecutable</key><string>play</string></dict></plist>");
    }

    static void write(const fs::path& file, const std::string& text) {
        fs::create_directories(file.parent_path());
        std::ofstream(file) << text;
    }

    static std::string entry(const std::string& lines) { return "[Desktop Entry]\n" + lines; }

    QString bundle() const { return QString::fromStdString(bundle_); }

    const support::PrivateFolder folder_;
    // What must be quoted in an entry.
    const fs::path bundle_ = folder_.path() / R"(a "b" $c 100% \d/Player.app)";
    const fs::path own_ = folder_.path() / "config/autostart";
    const fs::path system_ = folder_.path() / "xdg/autostart";
    const fs::path file_ = own_ / "org.example.Player.desktop";
    LoginItems items_{{own_, {system_, folder_.path() / "none"}}, "/opt/x/Tonvale"};
};

} // namespace

TEST_F(LoginItemsTest, AddsABundleOnceAndRemovesIt) {
    EXPECT_FALSE(items_.loginItemExists("Player", {}));
    EXPECT_FALSE(items_.removeFromLoginItems(bundle(), "Player"));
    ASSERT_TRUE(items_.addToLoginItems(bundle()));
    const std::string text = support::contentOf(file_);
    EXPECT_NE(text.find("\nName=Player\n"), std::string::npos) << text;
    EXPECT_NE(text.find("\nTryExec=/opt/x/Tonvale\n"), std::string::npos);
    EXPECT_EQ(text.find("Phase"), std::string::npos);

    std::optional<LoginItem> item;
    EXPECT_TRUE(items_.loginItemExists("pLAYER", {}, &item));
    ASSERT_TRUE(item);
    EXPECT_EQ(item->name, "Player");
    EXPECT_EQ(item->program, bundle());
    EXPECT_TRUE(item->isOwn);
    EXPECT_FALSE(item->isSwitchedOff);
    EXPECT_TRUE(items_.loginItemExists({}, bundle()));
    EXPECT_TRUE(items_.loginItemExists("another", bundle()));
    EXPECT_FALSE(items_.loginItemExists({}, bundle() + "x"));
    EXPECT_FALSE(items_.loginItemExists({}, {}));
    EXPECT_TRUE(items_.removeFromLoginItems({}, "PLAYER"));
    EXPECT_FALSE(fs::exists(file_));
    EXPECT_FALSE(items_.addToLoginItems(QString::fromStdString(folder_.path()))) << "no bundle";
}

TEST_F(LoginItemsTest, LeavesWhatTheUserHasSwitchedOff) {
    for (const std::string& off :
         {entry("Type=Application\nName=Player\nHidden=true\n"), entry("Hidden=true\n"),
          entry("Name=player\nExec=x\nX-GNOME-Autostart-enabled=false\n")}) {
        write(file_, off);
        std::optional<LoginItem> item;
        EXPECT_TRUE(items_.loginItemExists("Player", {}, &item)) << off;
        EXPECT_TRUE(item && item->isSwitchedOff) << off;
        EXPECT_TRUE(items_.removeFromLoginItems({}, "Player"));
        EXPECT_EQ(support::contentOf(file_), off);
    }
}

TEST_F(LoginItemsTest, TheUsersFileShadowsTheSystems) {
    const std::string name = file_.filename();
    write(system_ / name, entry("Name=Player\nExec=/usr/bin/other\n"));
    write(system_ / "a.desktop", entry("Name=First\nExec=sh -c \"sleep 1\"\n"));
    std::optional<LoginItem> item;
    EXPECT_TRUE(items_.loginItemExists("player", {}, &item));
    EXPECT_EQ(item->program, "/usr/bin/other");
    EXPECT_FALSE(items_.removeFromLoginItems({}, "Player")) << "it is not the user's";
    write(file_, entry("Name=Mine\nExec=/usr/bin/mine\n"));
    EXPECT_FALSE(items_.loginItemExists("player", {}));
    EXPECT_TRUE(items_.loginItemExists("player", "/usr/bin/mine"));
    EXPECT_TRUE(items_.loginItemExists("first", "/usr/bin/mine", &item));
    EXPECT_EQ(item->name, "First") << "the first that matches, by its file's name";
}

TEST_F(LoginItemsTest, SurvivesWhatIsNoEntry) {
    write(own_ / "binary.desktop", std::string("\0\1[", 3));
    write(own_ / "other.desktop", "[Other]\nName=Player\n");
    write(own_ / "quotes.desktop", entry("Name=Quotes\nExec=\"/usr/bin/x\n"));
    write(own_ / "Player.txt", entry("Name=Player\n"));
    fs::create_directories(own_ / "folder.desktop");
    EXPECT_FALSE(items_.loginItemExists("Player", {}));
    EXPECT_EQ(items_.all().size(), 1U);
    LoginItems blocked({own_ / "other.desktop" / "autostart"});
    EXPECT_FALSE(blocked.addToLoginItems(bundle()));
    EXPECT_FALSE(LoginItems({.own = {}}).addToLoginItems(bundle()));
}
