#pragma once

#include "RecordingView.h"
#include "comm/MVCommSocketPath.h"
#include "platform/bus/NotificationCenter.h"
#include "platform/loop/MainQueue.h"
#include "platform/loop/RunLoop.h"
#include "support/ScriptedPlugin.h"
#include "support/SystemLogRecorder.h"
#include "support/VolumeModel.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <string>

/// A controller with a view that records, and plug-ins that a test connects.
class AppVolumeFixture : public testing::Test {
  public:
    ~AppVolumeFixture() override { controller_.setView(nullptr); }
    AppVolumeFixture(const AppVolumeFixture&) = delete;
    AppVolumeFixture& operator=(const AppVolumeFixture&) = delete;

  protected:
    AppVolumeFixture() {
        EXPECT_TRUE(isServed_);
        controller_.setView(&view_);
        view_.told.clear();
    }

    /// The record of a program whose plug-in is connected by now.
    MVCommAppValue& connected(support::ScriptedPlugin& plugin, std::uint32_t pid,
                              const QString& name) {
        plugin.checkIn(pid, name.toStdString());
        EXPECT_TRUE(support::waitUntil([&] { return find(name) != nullptr; }));
        return *find(name);
    }

    MVCommAppValue& connected(std::uint32_t pid, const QString& name) {
        return connected(plugin_, pid, name);
    }

    MVCommAppValue* find(const QString& name) const {
        for (MVCommAppValue* const app : controller_.apps()) {
            if (app->processName() == name)
                return app;
        }
        return nullptr;
    }

    /// All commands that have been sent up to now: a marker is sent behind them.
    std::string sentTo(support::ScriptedPlugin& plugin) {
        constexpr std::int32_t markers = 1000; // and above
        static std::int32_t marker = markers;
        const MVCommConsoleMessage last{++marker, 0, 0, 0};
        model_.comm.sendMessage(&last);
        std::string text;
        EXPECT_TRUE(support::waitUntil([&] {
            for (const MVCommConsoleMessage& command : plugin.takeCommands()) {
                if (command.type == marker)
                    return true;
                if (command.type < markers)
                    text += std::to_string(command.type) + "," + std::to_string(command.pid) + "," +
                            std::to_string(command.reserved) + "," + std::to_string(command.value) +
                            " ";
            }
            return false;
        }));
        return text;
    }

    std::string sent() { return sentTo(plugin_); }

    QVariantMap stored() const { return model_.defaults.dictionary("Apps"); }

    static void moveSlider(MVCommAppValue& app, double value) {
        app.setVolume(value);
        platform::NotificationCenter::standard().post(
            "MVCollectionViewItemSliderChangedNotification", QVariant::fromValue(&app));
    }

    support::SystemLogRecorder log_;
    platform::RunLoop loop_;
    platform::MainQueueService mainQueue_{loop_};
    support::VolumeModel model_;
    const bool isServed_ = model_.serve();
    AppVolumeController& controller_ = model_.controller;
    RecordingView view_;
    support::ScriptedPlugin plugin_{MVCommMainSocketPath()};
};
