#pragma once

#include "comm/MVCommSocketPath.h"
#include "platform/loop/UnixSocket.h"
#include "support/BusConnection.h"
#include "support/ChildProcess.h"
#include "support/PrivateBus.h"
#include "support/ScriptedPlugin.h"
#include "support/WaitUntil.h"
#include "ui/items/ItemLayout.h"

#include <gtest/gtest.h>

#include <QRect>
#include <QStringList>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>

inline constexpr int titleBar = 33;
inline constexpr int rowHeight = ItemLayout::height;

/// For tests of the application's program on a display with nothing but itself, a session bus, and
/// plug-ins that a test connects.
class DesktopFixture : public testing::Test {
  protected:
    void TearDown() override {
        tonvale_.reset();
        std::filesystem::remove(preferences_);
    }

    using Variables = std::vector<std::pair<std::string, std::string>>;

    /// Answers when it serves its socket.
    void startTonvale(const Variables& environment = {}) {
        support::ChildProcess::Options options;
        options.environment = environment;
        std::vector<std::string> command = launcher_;
        command.insert(command.end(), {TONVALE_PROGRAM, "--screenshot", picture_});
        tonvale_.emplace(command, options);
        const std::string socket = MVCommMainSocketPath();
        EXPECT_TRUE(support::waitUntil([&] {
            return std::filesystem::exists(socket) && platform::connectUnixSocket(socket);
        })) << tonvale_->output();
    }

    void quitTonvale() {
        EXPECT_EQ(tonvale_->stop(), 0) << tonvale_->output();
        tonvale_.reset();
    }

    /// As the desktop does for an action of the program's menu entry.
    void activateAction(const QString& action) const {
        const support::BusConnection bus(session_.address());
        auto call = QDBusMessage::createMethodCall("com.quarnel.Tonvale", "/com/quarnel/Tonvale",
                                                   "org.freedesktop.Application", "ActivateAction");
        call.setArguments({action, QVariantList(), QVariantMap()});
        const QDBusMessage answer = bus->call(call);
        EXPECT_EQ(answer.type(), QDBusMessage::ReplyMessage) << answer.errorMessage().toStdString();
    }

    /// As the preferences have a window's frame.
    static std::string textOf(const QRect& frame) {
        return std::to_string(frame.x()) + " " + std::to_string(frame.y()) + " " +
               std::to_string(frame.width()) + " " + std::to_string(frame.height());
    }

    void rememberFrame(const QRect& frame) const {
        std::ofstream(preferences_, std::ios::binary)
            << R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0"><dict>)"
            << "<key>MainWindow</key><string>" << textOf(frame) << "</string></dict></plist>";
    }

    std::string rememberedFrame() const {
        std::ifstream file(preferences_, std::ios::binary);
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        const QStringList values =
            QString::fromStdString(text).section("MainWindow</key>", 1).split("<string>");
        return values.size() > 1 ? values[1].section("</string>", 0, 0).toStdString()
                                 : std::string();
    }

    /// A plug-in that has the item "player", of the process 4711.
    void connectPlayer() {
        plugin_.emplace(MVCommMainSocketPath());
        plugin_->checkIn(4711, "player");
    }

    /// Everything that it gets up to what ends so.
    std::string sentUntil(const std::string& end) {
        std::string all;
        EXPECT_TRUE(support::waitUntil([&] {
            for (const MVCommConsoleMessage& command : plugin_->takeCommands())
                all += std::to_string(command.type) + "," + std::to_string(command.pid) + "," +
                       std::to_string(command.value) + " ";
            return all.ends_with(end);
        })) << all;
        return all;
    }

    const std::filesystem::path preferences_ =
        std::filesystem::path(std::getenv("XDG_CONFIG_HOME")) / "com.quarnel.Tonvale.plist";
    const std::string picture_ =
        std::filesystem::path(std::getenv("TMPDIR")) / "window.png"; // at its end
    const support::PrivateBus session_;
    std::vector<std::string> launcher_; // a command that becomes the program
    std::optional<support::ChildProcess> tonvale_;
    std::optional<support::ScriptedPlugin> plugin_;
};
