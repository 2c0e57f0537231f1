#pragma once

#include "framework/preferences/QNPreferencesWindowController.h"
#include "platform/loop/MainQueue.h"
#include "platform/loop/RunLoop.h"
#include "platform/qtloop/RunLoopNotifier.h"
#include "support/VolumeModel.h"
#include "support/WaitUntil.h"

#include <QTest>

#include <gtest/gtest.h>

/// A preferences window around a model of its own, for panes that a test adds.
class PaneFixture : public testing::Test {
  protected:
    /// The part of the window with that text or accessible name.
    template <typename Widget>
    Widget* find(const QString& text) const {
        for (auto* const each : window_.window().findChildren<Widget*>()) {
            if (each->property("text").toString().remove('&') == text ||
                each->accessibleName() == text)
                return each;
        }
        ADD_FAILURE() << text.toStdString();
        return nullptr;
    }

    platform::RunLoop loop_;
    platform::RunLoopNotifier notifier_{loop_};
    platform::MainQueueService mainQueue_{loop_};
    support::VolumeModel model_;
    QNPreferencesWindowController window_{"Test", 0, model_.defaults};
};
