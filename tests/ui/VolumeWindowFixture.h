#pragma once

#include "comm/MVCommSocketPath.h"
#include "platform/loop/MainQueue.h"
#include "platform/loop/RunLoop.h"
#include "platform/loop/RunLoopNotifier.h"
#include "support/ScriptedPlugin.h"
#include "support/VolumeModel.h"
#include "support/VolumeWindowProbe.h"
#include "support/WaitUntil.h"
#include "ui/VolumeNumbers.h"
#include "ui/VolumeWindow.h"
#include "ui/items/ItemLayout.h"
#include "ui/items/MVCollectionView.h"
#include "ui/items/MVMuteImageView.h"
#include "ui/items/MVVolumeSlider.h"

#include <QApplication>
#include <QTest>

#include <gtest/gtest.h>

using support::RowProbe;
using support::ScriptedPlugin;

/// A volume window with a model of its own, which serves the socket.
class VolumeWindowFixture : public testing::Test {
  protected:
    VolumeWindowFixture() {
        EXPECT_TRUE(model_.serve());
        window_.show();
    }

    MVCollectionViewItem::Surroundings surroundings() {
        return {model_.controller,
                [this](const QString& name) { model_.ignoredApps.addCustomIgnore(name); },
                [] { return false; }, [](float) {},
                [this](const QString& name) { model_.ignoredApps.removeCustomIgnore(name); }};
    }

    bool showsRows(const QStringList& names) const {
        return support::waitUntil([&] { return support::rowNames(window_) == names; });
    }

    /// With the row "player", of the process 4711.
    RowProbe connected(ScriptedPlugin& plugin) const {
        plugin.checkIn(4711, "player");
        EXPECT_TRUE(showsRows({QStringLiteral("player")}));
        return {window_, QStringLiteral("player")};
    }

    static std::string received(ScriptedPlugin& plugin) {
        std::string text;
        EXPECT_TRUE(support::waitUntil([&] {
            for (const MVCommConsoleMessage& command : plugin.takeCommands())
                text += std::to_string(command.type) + "," + std::to_string(command.pid) + "," +
                        std::to_string(command.value) + " ";
            return !text.empty();
        }));
        return text;
    }

    /// Everything up to what ends so.
    static std::string sentUntil(ScriptedPlugin& plugin, const std::string& end) {
        std::string all;
        EXPECT_TRUE(support::waitUntil([&] {
            for (const MVCommConsoleMessage& command : plugin.takeCommands())
                all += std::to_string(command.type) + "," + std::to_string(command.pid) + "," +
                       std::to_string(command.value) + " ";
            return all.ends_with(end);
        })) << all;
        return all;
    }

    platform::RunLoop loop_;
    platform::RunLoopNotifier notifier_{loop_};
    platform::MainQueueService mainQueue_{loop_};
    support::VolumeModel model_;
    VolumeWindow window_{surroundings()};
};
