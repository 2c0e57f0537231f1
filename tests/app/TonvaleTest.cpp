#include "comm/MVCommSocketPath.h"
#include "platform/DistributedNotification.h"
#include "platform/UnixSocket.h"
#include "support/ChildProcess.h"
#include "support/PrivateBus.h"
#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"
#include "support/ScriptedPlugin.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QImage>

#include <csignal>
#include <filesystem>

using support::ChildProcess;

// The real program, started as a person's desktop starts it, off screen.
namespace {

class TonvaleTest : public testing::Test {
  protected:
    const support::PrivateFolder folder_;
    const support::ScopedVariable socketFolder_{"TONVALE_SOCKET_DIR", folder_.path().string()};
    const std::string socket_ = MVCommMainSocketPath();

    /// The program, serving its socket.
    std::unique_ptr<ChildProcess> start(const std::vector<std::string>& options = {}) const {
        std::vector<std::string> arguments{TONVALE_PROGRAM};
        arguments.insert(arguments.end(), options.begin(), options.end());
        auto program = std::make_unique<ChildProcess>(arguments);
        EXPECT_TRUE(support::waitUntil([&] { return isServed() || !program->isRunning(); }));
        EXPECT_TRUE(program->isRunning()) << program->output();
        return program;
    }

    bool isServed() const {
        return std::filesystem::exists(socket_) && platform::connectUnixSocket(socket_);
    }

    static bool says(const ChildProcess& program, const std::string& text) {
        return support::waitUntil([&] { return program.output().find(text) != std::string::npos; });
    }
};

} // namespace

TEST_F(TonvaleTest, EveryTerminationSignalEndsItCleanlyWithTheSocketGone) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        const auto program = start();
        support::ScriptedPlugin plugin(socket_);
        program->signal(signal);
        EXPECT_EQ(program->wait(), 0) << program->output();
        EXPECT_FALSE(std::filesystem::exists(socket_)) << signal;
        EXPECT_TRUE(plugin.isEnded());
    }
}

TEST_F(TonvaleTest, ReplacesTheSocketOfAProgramThatWasKilled) {
    start()->stop(SIGKILL);
    ASSERT_TRUE(std::filesystem::exists(socket_));
    ASSERT_FALSE(isServed());
    start();
}

TEST_F(TonvaleTest, GoesOnAndTellsThePersonWhenTheSocketCannotBeServed) {
    const QString usual = QString::fromStdString(folder_.path() / "usual.png");
    const QString told = QString::fromStdString(folder_.path() / "told.png");
    const auto waiting = start({"--screenshot", usual.toStdString()});
    waiting->signal(SIGTERM);
    EXPECT_EQ(waiting->wait(), 0);

    const support::ScopedVariable nowhere("TONVALE_SOCKET_DIR", folder_.path() / "missing");
    ChildProcess program({TONVALE_PROGRAM, "--screenshot", told.toStdString()});
    EXPECT_TRUE(says(program, "Couldn't bind(): No such file or directory (2)"));
    EXPECT_TRUE(program.isRunning());
    program.signal(SIGTERM);
    EXPECT_EQ(program.wait(), 0);
    ASSERT_FALSE(QImage(told).isNull());
    EXPECT_NE(QImage(told), QImage(usual)) << "the window says something else";
}

TEST_F(TonvaleTest, SavesAPictureOfItsWindowAtTheEnd) {
    const std::string file = folder_.path() / "window.png";
    const auto program = start({"--screenshot", file});
    support::ScriptedPlugin plugin(socket_);
    plugin.checkIn(4711, "player");
    ASSERT_TRUE(says(*program, "'player' connected"));
    program->signal(SIGTERM);
    EXPECT_EQ(program->wait(), 0);
    const QImage picture(QString::fromStdString(file));
    EXPECT_GE(picture.width(), 400);
    EXPECT_GE(picture.height(), 200);

    const auto failing = start({"--screenshot", (folder_.path() / "missing" / "x.png").string()});
    failing->signal(SIGTERM);
    EXPECT_EQ(failing->wait(), 0);
    EXPECT_NE(failing->output().find("Couldn't save the screenshot"), std::string::npos);
}

TEST_F(TonvaleTest, PrintsTheVersionThatItsBundleStates) {
    ChildProcess program({TONVALE_PROGRAM, "--version"});
    EXPECT_EQ(program.wait(), 0);
    EXPECT_EQ(program.output(), "Tonvale " TONVALE_VERSION "\n");
    EXPECT_FALSE(isServed()) << "nothing is started";
}

TEST_F(TonvaleTest, AnnouncesItsLaunchOnTheSessionBus) {
    const support::PrivateBus bus;
    int announcements = 0;
    const platform::DistributedNotificationObserver observer(
        QStringLiteral("com.quarnel.mivo.guiDidLaunch"), [&] { ++announcements; });
    ASSERT_TRUE(observer.isActive());
    const auto program = start();
    EXPECT_TRUE(support::waitUntil([&] { return announcements == 1; })) << program->output();
}
