#pragma once

#include "comm/MVCommSocketPath.h"
#include "model/VolumeConversion.h"
#include "platform/loop/MainQueue.h"
#include "platform/loop/RunLoop.h"
#include "platform/qtloop/RunLoopNotifier.h"
#include "support/ScriptedPlugin.h"
#include "support/VolumeModel.h"
#include "support/VolumeWindowProbe.h"
#include "support/WaitUntil.h"
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

    bool showsRows(const QStringList& names) const {
        return support::waitUntil([&] { return support::rowNames(window_) == names; });
    }

    /// `plugin_` with the row "player", of the process 4711.
    RowProbe connected() {
        plugin_.emplace(MVCommMainSocketPath());
        plugin_->checkIn(4711, "player");
        EXPECT_TRUE(showsRows({"player"}));
        return {window_, "player"};
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

    platform::RunLoop loop_;
    platform::RunLoopNotifier notifier_{loop_};
    platform::MainQueueService mainQueue_{loop_};
    support::VolumeModel model_;
    VolumeWindow window_{MVCollectionViewItem::Dependencies{
        model_.controller,
        [this](const QString& name) { model_.ignoredApps.addCustomIgnore(name); },
        [] { return false; }, [](float) {},
        [this](const QString& name) { model_.ignoredApps.removeCustomIgnore(name); }}};
    std::optional<ScriptedPlugin> plugin_;
};
