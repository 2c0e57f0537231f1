#include "e2e/ApplicationFixture.h"

#include "support/ScopedVariable.h"
#include "support/SystemdManager.h"

namespace fs = std::filesystem;

// An application that the user has started, playing or not, as shown in the window. The
// application's program runs in German, the plug-in in the language C.
namespace {

class RunningApplicationTest : public ApplicationFixture {
  protected:
    void SetUp() override {
        ApplicationFixture::SetUp();
        fs::create_directories(entries_);
        writeFile(entries_ / "org.example.Jukebox.desktop",
                  "[Desktop Entry]\nType=Application\nName=Jukebox\nName[de]=Musiktruhe\nExec=" +
                      program_.path() + " %U\n");
    }

    void TearDown() override {
        endAll();
        fs::remove_all(entries_);
        ApplicationFixture::TearDown();
    }

    void endAll() {
        player_.reset();
        tonvale_.reset();
        plugin_.reset();
        fs::remove(own_);
    }

    void startGermanTonvale() {
        const support::ScopedVariable language("LC_ALL", "de_DE.UTF-8");
        startTonvale();
    }

    /// As a desktop does, with a unit for it. It is silent.
    void startPlayer() {
        player_.emplace(std::vector<std::string>{program_.path(), "1", "0", "0.5"});
        EXPECT_TRUE(waitUntil([this] { return player_->outputSize() > 0; }));
        systemd_.say("UnitNew", "app-org.example.Jukebox-1.scope");
        if (tonvale_) {
            EXPECT_TRUE(isOnlyItem(false));
        }
    }

    /// One letter each: the application's program, the plug-in, the player, which is silent until
    /// it plays.
    void doInOrder(const char* order) {
        for (; *order != '\0'; ++order) {
            if (*order == 'A')
                startGermanTonvale();
            else if (*order == 'P')
                startPlugin();
            else if (*order == 'S')
                startPlayer();
            else
                player_->signal(SIGUSR1);
        }
    }

    static QStringList names() {
        QStringList names;
        for (const auto& item : items())
            names += item.toObject()["name"].toString();
        names.removeAll("Sound Effects");
        return names;
    }

    /// Waits until the player is the only program in the window, with its process.
    bool isOnlyItem(bool isPlaying) const {
        const bool isThere = waitUntil([&] {
            for (const auto& item : items()) {
                const QJsonObject object = item.toObject();
                if (object["name"].toString() == "Musiktruhe")
                    return object["pid"].toInt() == player_->pid() &&
                           object["playing"].toBool() == isPlaying && names().size() == 1;
            }
            return false;
        });
        EXPECT_TRUE(isThere) << qPrintable(names().join(", "));
        return isThere;
    }

    static void set(const char* volume) { control({"set", "Musiktruhe", volume}); }

    const fs::path entries_ = fs::path(std::getenv("XDG_DATA_HOME")) / "applications";
    const support::NamedCopy program_{STREAM_PLAYER, "jukebox-bin"};
    support::SystemdManager systemd_{QString::fromLocal8Bit(qgetenv("DBUS_SESSION_BUS_ADDRESS"))};
    std::optional<support::ChildProcess> player_;
};

} // namespace

TEST_F(RunningApplicationTest, IsOneItemWithLevelAndSliderWhoeverCameFirst) {
    for (const char* const order : {"APSp", "SPAp", "PSpA", "SpAP", "ASpP"}) {
        SCOPED_TRACE(order);
        doInOrder(order);
        ASSERT_TRUE(isOnlyItem(true));
        set("50");
        EXPECT_TRUE(hearsConstant(level * gainOf(50)));
        set("100");
        EXPECT_TRUE(hearsConstant(level));
        player_->stop();
        EXPECT_TRUE(waitUntil([] { return names().isEmpty(); })) << qPrintable(names().join(", "));
        endAll();
    }
}

TEST_F(RunningApplicationTest, WhatIsSetWhileItIsSilentHoldsFromItsFirstSampleOn) {
    doInOrder("APS");
    set("40");
    EXPECT_TRUE(isOnlyItem(false));
    player_->signal(SIGUSR1);
    EXPECT_TRUE(hearsConstant(level * gainOf(40)));
    EXPECT_TRUE(isOnlyItem(true));
    plugin_->stop();
    EXPECT_TRUE(isOnlyItem(false)) << "the item stays, without its level";
}
