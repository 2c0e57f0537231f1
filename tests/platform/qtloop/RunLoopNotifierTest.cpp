#include "platform/qtloop/RunLoopNotifier.h"

#include "platform/loop/RunLoop.h"
#include "platform/loop/Timer.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QDrag>
#include <QMenu>
#include <QMimeData>
#include <QTimer>

using namespace std::chrono_literals;

namespace {

/// Two timers in a row: the second is started by the loop's own service of the first, as an
/// activity reset is, so both show that the loop is served for as long as a window is open.
class RunLoopNotifierTest : public testing::Test {
  protected:
    platform::RunLoop loop_;
    platform::RunLoopNotifier notifier_{loop_};

    /// Opens something that runs a loop of its own from inside a callback of the run loop, and has
    /// it closed by a later timer of the run loop.
    template <typename Open, typename Close>
    bool servedWhile(Open open, Close close) {
        bool served = false;
        platform::Timer second(loop_, [&] {
            served = true;
            close();
        });
        platform::Timer first(loop_, [&] { second.start(1ms); });
        platform::Timer opener(loop_, [&] {
            open();
            QCoreApplication::quit();
        });
        first.start(20ms);
        opener.start(0ms);
        QApplication::exec();
        return served;
    }
};

} // namespace

TEST_F(RunLoopNotifierTest, ServesTheRunLoopWhileAModalDialogIsOpen) {
    QDialog dialog;
    EXPECT_TRUE(servedWhile([&] { dialog.exec(); }, [&] { dialog.reject(); }));
}

TEST_F(RunLoopNotifierTest, ServesTheRunLoopWhileAMenuIsOpen) {
    QMenu menu;
    menu.addAction("entry");
    EXPECT_TRUE(servedWhile([&] { menu.exec(QPoint(10, 10)); }, [&] { menu.close(); }));
}

TEST_F(RunLoopNotifierTest, ServesTheRunLoopDuringADrag) {
    QWidget window;
    window.show();
    auto* const drag = new QDrag(&window); // Qt deletes it after the drag
    drag->setMimeData(new QMimeData);
    EXPECT_TRUE(servedWhile([&] { drag->exec(); }, [] { QDrag::cancel(); }));
}
