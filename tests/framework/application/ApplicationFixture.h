#pragma once

#include "framework/application/QNGUIApplication.h"

#include "platform/base/Directories.h"
#include "platform/base/ExceptionReport.h"
#include "platform/loop/MainQueue.h"
#include "platform/loop/RunLoop.h"
#include "platform/qtloop/RunLoopNotifier.h"
#include "support/Files.h"
#include "support/PrivateFolder.h"
#include "support/SystemLogRecorder.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

using support::contentOf;

/// An application object in a program that Qt's event loop drives.
class ApplicationTest : public testing::Test {
  public:
    ~ApplicationTest() override { platform::replaceExceptionHook(nullptr); }

  protected:
    std::string path(const std::string& name) const { return folder_.path() / name; }

    support::SystemLogRecorder systemLog;
    platform::RunLoop loop;
    const platform::RunLoopNotifier notifier{loop};
    const platform::MainQueueService mainQueue{loop};
    QNGUIApplication application;

  private:
    const support::PrivateFolder folder_;
};
