#include "framework/logviewer/QNLogTableViewer.h"

#include "framework/log/qnlog.h"
#include "framework/logviewer/LogFileCopy.h"
#include "framework/logviewer/LogMoment.h"
#include "framework/logviewer/LogTableView.h"
#include "look/window/MVCustomWindow.h"
#include "platform/loop/MainQueue.h"
#include "platform/loop/RunLoop.h"
#include "support/WaitUntil.h"

#include "LogFileFixture.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QClipboard>
#include <QComboBox>
#include <QFileDialog>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QScrollBar>
#include <QTest>

using support::waitUntil;

namespace {

const std::string date(LogFileFixture::date);

/// A viewer whose window is open.
class LogViewer : public testing::Test {
  protected:
    void open(std::string_view text) {
        log.append(text);
        handle.reset(qnlog_open(log.path().c_str(), 0));
        viewer = QNLogTableViewer::logViewerWithHandle(handle.get());
        viewer->showWindow();
        ASSERT_TRUE(waitUntil(
            [&] { return viewer->window()->isVisible() && viewer->document().isCaughtUp(); }));
        viewer->window()->activateWindow();
        table().setFocus();
        support::serveEvents();
    }

    LogTableView& table() { return viewer->table(); }
    std::size_t rows() { return viewer->numberOfRowsInTableView(); }
    bool waitForRows(std::size_t count) {
        return waitUntil([&] { return rows() == count; });
    }
    QString message(std::size_t row) { return viewer->entryOfRow(row).message(); }

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(&table(), key, modifiers);
    }
    QLineEdit& input(const QString& name) {
        for (QLineEdit* const each : viewer->window()->findChildren<QLineEdit*>()) {
            if (each->accessibleName() == name)
                return *each;
        }
        throw std::runtime_error("no such input");
    }
    QLineEdit& filter() { return input("Only rows with this text"); }
    /// More messages, which are then shown.
    bool appends(int count) {
        const std::size_t before = rows();
        log.append(LogFileFixture::messages(static_cast<int>(before), count));
        return waitForRows(before + static_cast<std::size_t>(count));
    }
    void scroll(int pixels) {
        QScrollBar& bar = *table().verticalScrollBar();
        bar.setValue(bar.value() + pixels);
    }
    bool isInSight(std::size_t row) { return !table().rowRect(row).isEmpty(); }
    bool isTold(const QString& text) {
        const auto labels = viewer->window()->findChildren<QLabel*>();
        return std::ranges::any_of(labels, [&](const QLabel* label) {
            return label->isVisible() && label->text().contains(text);
        });
    }

    struct Close {
        void operator()(qnlog_handle* log_) const { qnlog_close(log_); }
    };
    platform::RunLoop loop;
    const platform::MainQueueService mainQueue{loop};
    const LogFileFixture log{};
    std::unique_ptr<qnlog_handle, Close> handle;
    std::unique_ptr<QNLogTableViewer> viewer;
};

} // namespace

TEST_F(LogViewer, FollowsTheEndOnlyWhileItIsInSight) {
    open(LogFileFixture::messages(0, 500));
    EXPECT_TRUE(appends(100) && isInSight(599));
    scroll(-50);
    ASSERT_FALSE(table().isAtEnd());
    const std::size_t row = table().topRow() + 1;
    const QRect place = table().rowRect(row);
    EXPECT_TRUE(appends(100));
    EXPECT_EQ(table().topRow() + 1, row);
    EXPECT_EQ(table().rowRect(row), place);
    press(Qt::Key_End);
    EXPECT_TRUE(appends(1) && isInSight(700));
}

/// Rows come while the window does not paint, and all go before it does.
TEST_F(LogViewer, ForgetsRowsThatHaveNotBeenMeasured) {
    open(LogFileFixture::messages(0, 500));
    table().setCurrentRow(499);
    scroll(-5);
    ASSERT_FALSE(table().isAtEnd());
    table().viewport()->setUpdatesEnabled(false);
    EXPECT_TRUE(appends(1));
    viewer->window()->close();
    EXPECT_EQ(rows(), 0U);
}

/// Rows come into sight that have been estimated only, and wrongly: their words do not fill lines.
TEST_F(LogViewer, MovesByWhatIsScrolledAlthoughHeightsWereEstimated) {
    const std::string word(60, 'w');
    open(LogFileFixture::messages(0, 3000, word + ' ' + word + ' ' + word + ' ' + word));
    for (const int step : {-40, -300, 40, -7, -500}) {
        const std::size_t row = table().topRow() + 2;
        const int before = table().rowRect(row).top();
        scroll(step);
        if (const QRect now = table().rowRect(row); !now.isEmpty() && step > -400) {
            EXPECT_NEAR(now.top(), before - step, 1) << step;
        }
    }
    const std::size_t top = table().topRow();
    viewer->window()->resize(500, 400);
    EXPECT_EQ(table().topRow(), top);
    for (std::size_t row = table().topRow(); isInSight(row) && isInSight(row + 1); ++row)
        ASSERT_EQ(table().rowRect(row).bottom() + 1, table().rowRect(row + 1).top());
    table().verticalScrollBar()->setValue(0);
    EXPECT_EQ(table().rowRect(0).top(), 0);
}

TEST_F(LogViewer, ScrollsThroughARowThatIsTallerThanTheWindow) {
    std::string tall = ":00:01.1  : [E] tall\n";
    for (int i = 0; i < 200; ++i)
        tall += "line " + std::to_string(i) + '\n';
    open(date + ":00:00.1  : [I] first\n" + tall + ":00:02.1  : [I] third\n" +
         LogFileFixture::messages(0, 100));
    for (const Qt::Key key : {Qt::Key_E, Qt::Key_Down}) {
        press(Qt::Key_Home);
        press(key);
        ASSERT_EQ(table().currentRow(), 1U);
        EXPECT_GE(table().rowRect(1).top(), 0) << "it is entered at its beginning: " << key;
    }
    int before = table().rowRect(1).top();
    for (int presses = 0; table().currentRow() == 1 && presses < 300; ++presses) {
        press(Qt::Key_Down);
        const QRect place = table().rowRect(1);
        ASSERT_TRUE(place.isEmpty() || place.top() <= before);
        ASSERT_LT(before - place.top(), table().viewport()->height()) << "no line is passed over";
        before = place.top();
    }
    EXPECT_EQ(table().currentRow(), 2U);
    EXPECT_TRUE(isInSight(2));
    table().setCurrentRow(100);
    table().setCurrentRow(2);
    ASSERT_EQ(table().topRow(), 2U);
    press(Qt::Key_Up);
    ASSERT_EQ(table().currentRow(), 1U);
    EXPECT_EQ(table().rowRect(1).bottom() + 1, table().viewport()->height()) << "and at its end";
    press(Qt::Key_Down);
    press(Qt::Key_F, Qt::ControlModifier);
    QTest::keyClicks(&input("Find:"), "line 150");
    ASSERT_TRUE(waitUntil([&] { return table().currentRow() == 1; }));
    const int lineHeight = table().rowRect(1).height() / 201;
    const int y = table().rowRect(1).top() + 151 * lineHeight;
    EXPECT_TRUE(y > 0 && y < table().viewport()->height()) << "the match is in sight: " << y;
}

TEST_F(LogViewer, KeepsTheRowInSightWhenAFilterIsSetAndCleared) {
    open(LogFileFixture::messages(0, 4000));
    table().setCurrentRow(1234); // a warning
    const QRect place = table().rowRect(1234);
    filter().setText("MESSAGE 12");
    ASSERT_TRUE(waitForRows(111)) << rows();
    EXPECT_EQ(message(table().currentRow()), "message 1234");
    EXPECT_TRUE(isInSight(table().currentRow()));
    log.append(LogFileFixture::messages(4000, 1, "message 12"));
    ASSERT_TRUE(waitForRows(112));
    filter().clear();
    ASSERT_TRUE(waitForRows(4001));
    EXPECT_EQ(table().currentRow(), 1234U);
    EXPECT_EQ(table().rowRect(1234), place);
    auto* const levels = viewer->window()->findChildren<QComboBox*>().at(1);
    levels->setCurrentText("Errors");
    ASSERT_EQ(rows(), 400U);
    EXPECT_EQ(message(0), "message 9");
    levels->setCurrentText("Warnings and errors");
    ASSERT_EQ(rows(), 800U);
    filter().setText("nothing like that");
    EXPECT_EQ(table().hint(), "") << "it is not known yet";
    EXPECT_TRUE(waitUntil([&] { return table().hint() == "No row passes the filter."; }));
}

TEST_F(LogViewer, GoesToMatchesWarningsErrorsAndTimes) {
    open(LogFileFixture::messages(0, 4000));
    const auto arrivesAt = [&](std::size_t row) {
        return waitUntil([&] { return table().currentRow() == row; }) && isInSight(row);
    };
    table().setCurrentRow(1000);
    press(Qt::Key_F, Qt::ControlModifier);
    QLineEdit& needle = input("Find:");
    QTest::keyClicks(&needle, "E 99");
    EXPECT_TRUE(arrivesAt(999));
    press(Qt::Key_F3);
    EXPECT_TRUE(arrivesAt(99)) << "the first one is found after the last one";
    table().setCurrentRow(5);
    needle.clear();
    QTest::keyClicks(&needle, "E 99");
    EXPECT_TRUE(waitUntil([&] { return isTold("Went on at the other end"); }));
    QTest::keyClick(&needle, Qt::Key_Escape);
    table().setCurrentRow(1000);
    for (const auto& [key, modifier, row] : {std::tuple(Qt::Key_W, Qt::NoModifier, 1004U),
                                             {Qt::Key_E, Qt::NoModifier, 1009U},
                                             {Qt::Key_E, Qt::NoModifier, 1019U},
                                             {Qt::Key_E, Qt::ShiftModifier, 1009U},
                                             {Qt::Key_W, Qt::ShiftModifier, 1004U}}) {
        press(key, modifier);
        EXPECT_TRUE(arrivesAt(row)) << row;
    }
    table().setCurrentRow(0);
    press(Qt::Key_W, Qt::ShiftModifier);
    EXPECT_TRUE(isTold("No such message comes before this one."));
    press(Qt::Key_W);
    EXPECT_FALSE(isTold("No such message"));
    press(Qt::Key_G, Qt::ControlModifier);
    QLineEdit& time = input("Go to time:");
    for (const auto& [text, row] :
         {std::pair("0:20", 1200U), {"2014-03-07 1:00:07", 3607U}, {"soon", 3607U}}) {
        time.setText(text);
        QTest::keyClick(&time, Qt::Key_Return);
        EXPECT_TRUE(arrivesAt(row)) << text;
    }
    EXPECT_TRUE(isTold("Enter a time"));
}

TEST_F(LogViewer, CopiesWholeMessagesOfAnyLength) {
    const std::string longText(10 << 20, 'x');
    open(date + ":05:07.3  : [W] careful\nof this\n:06:00.1  : [I] " + longText + '\n');
    EXPECT_LT(message(1).size(), 100'000);
    EXPECT_TRUE(message(1).contains("10 MB left out")) << message(1).right(80).toStdString();
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(),
              "2014-03-07 09:05:07.003 [W] careful\nof this\n2014-03-07 09:06:00.001 [I] " +
                  QString::fromStdString(longText) + '\n');
    log.append(":07:00.1  : [I] ");
    std::filesystem::resize_file(log.path(), std::uintmax_t{140} << 20U);
    log.append("\n");
    ASSERT_TRUE(waitForRows(3));
    QGuiApplication::clipboard()->setText("kept");
    for (const auto& [row, isTooMuch] : {std::pair(2U, true), {0U, false}}) {
        table().setCurrentRow(row);
        press(Qt::Key_C, Qt::ControlModifier);
        EXPECT_EQ(isTold("too much to copy"), isTooMuch);
        EXPECT_EQ(QGuiApplication::clipboard()->text() == "kept", isTooMuch);
    }
}

TEST_F(LogViewer, SaysWhyItShowsNothingOrAnOldFile) {
    open("");
    EXPECT_EQ(table().hint(), "Nothing has been logged yet.");
    log.append(date + ":05:07.3  : [W] \xFF\n");
    EXPECT_TRUE(waitUntil([&] { return isTold("not UTF-8 text: 1"); }));
    std::filesystem::rename(log.path(), log.path("other"));
    EXPECT_TRUE(waitUntil([&] { return isTold("renamed or replaced"); }));
    viewer->window()->close();
    viewer->showWindow();
    EXPECT_TRUE(waitUntil([&] { return table().hint().startsWith("The log can't be read"); }));
    log.append("no log\n");
    viewer->window()->close();
    viewer->showWindow();
    EXPECT_TRUE(
        waitUntil([&] { return table().hint() == "This file does not begin like a log."; }));
    QNLogTableViewer without(nullptr);
    without.showWindow();
    EXPECT_TRUE(without.table().hint().contains("There is no log file"));
}

TEST_F(LogViewer, TellsAssistiveToolsOfAllRows) {
    open(LogFileFixture::messages(0, 2000));
    QAccessibleInterface* const list = QAccessible::queryAccessibleInterface(&table());
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->role(), QAccessible::List);
    EXPECT_EQ(list->childCount(), 2000);
    QAccessibleInterface* const row = list->child(1234);
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(row->text(QAccessible::Name), "00:20:34, Warning, message 1234");
    EXPECT_EQ(list->indexOfChild(row), 1234);
    for (const bool isCurrent : {false, true}) {
        EXPECT_EQ(row->state().offscreen, !isCurrent);
        EXPECT_EQ(row->state().selected, isCurrent);
        EXPECT_EQ(list->focusChild() == row, isCurrent);
        table().setCurrentRow(1234);
    }
    const QPoint middle = row->rect().center();
    EXPECT_EQ(list->childAt(middle.x(), middle.y()), row);
    for (int index = 0; index <= 2000; ++index)
        ASSERT_EQ(list->child(index) == nullptr, index == 2000) << index;
}

TEST_F(LogViewer, ListsEarlierRunsAndSavesNoCopyOverOne) {
    std::ofstream(log.path("Tonvale0.log")) << LogFileFixture::messages(0, 7);
    open(LogFileFixture::messages(0, 3));
    auto* const files = viewer->window()->findChildren<QComboBox*>().at(0);
    ASSERT_EQ(files->count(), 2);
    files->setCurrentIndex(1);
    EXPECT_TRUE(waitForRows(7));
    table().setCurrentRow(0);
    for (const std::string& path : {log.path(), log.path("Tonvale0.log")}) {
        press(Qt::Key_S, Qt::ControlModifier);
        auto* const dialog = viewer->window()->findChild<QFileDialog*>();
        ASSERT_NE(dialog, nullptr);
        Q_EMIT dialog->fileSelected(QString::fromStdString(path));
        delete dialog;
        EXPECT_TRUE(isTold("That is the log itself.")) << path;
        press(Qt::Key_C, Qt::ControlModifier); // which takes the notice away
    }
    viewer->window()->activateWindow();
    files->setCurrentIndex(0);
    EXPECT_TRUE(waitForRows(3));
    filter().setText("message 1");
    ASSERT_TRUE(waitForRows(1));
    press(Qt::Key_F, Qt::ControlModifier);
    QTest::keyClicks(&input("Find:"), "message");
    files->setCurrentIndex(1);
    EXPECT_TRUE(waitForRows(1)) << "the filter is that of the file shown before";
    EXPECT_TRUE(waitUntil([&] { return isTold("Rows with it: 7"); }));
    viewer->window()->close();
    viewer->showWindow();
    EXPECT_TRUE(waitForRows(1)) << "and stays that of the window";
}

/// The kernel tells of more bytes than such a file has.
TEST_F(LogViewer, SavesNoPartOfALogAsACopy) {
    const auto unreadable = QN::logviewer::LogBytes::open("/sys/devices/system/cpu/online");
    ASSERT_NE(unreadable, nullptr);
    std::optional<QString> error;
    QN::logviewer::saveCopy(unreadable, QString::fromStdString(log.path("copy")),
                            [&](const QString& told) { error = told; });
    ASSERT_TRUE(waitUntil([&] { return error.has_value(); }));
    EXPECT_EQ(*error, "The log can't be read to its end.");
    EXPECT_FALSE(std::filesystem::exists(log.path("copy")));
}

TEST(LogColors, AreThoseOfTheLevels) {
    const std::map<std::uint32_t, QRgb> expected{
        {0, qRgb(194, 187, 255)}, {1, qRgb(255, 199, 199)},  {2, qRgb(254, 244, 156)},
        {4, qRgb(176, 240, 240)}, {15, qRgb(200, 200, 200)}, {16, qRgb(240, 240, 240)}};
    for (std::uint32_t level = 0; level < 32; ++level) {
        const std::optional<QColor> color = QNLogTableViewer::colorForLevel(level);
        ASSERT_EQ(color.has_value(), expected.contains(level)) << level;
        EXPECT_TRUE(!color || color->rgb() == expected.at(level)) << level;
    }
}
