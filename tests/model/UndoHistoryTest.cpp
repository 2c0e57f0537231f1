#include "model/UndoHistory.h"

#include "support/ManualClock.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

class UndoHistoryTest : public testing::Test {
  protected:
    /// What has been done by undo and redo since the last call; each reports to the history, as
    /// the controls do.
    std::string done() { return std::exchange(done_, {}); }

    void drag(const char* program, std::initializer_list<int> percents) {
        int before = *percents.begin();
        for (const int percent : percents) {
            history_.volumeChanged(QLatin1String(program), before, percent);
            before = percent;
        }
        history_.volumeReleased(QLatin1String(program));
    }

    support::ManualClock clock_;
    std::string done_;
    int changes_ = 0;
    UndoHistory history_{{[this](const QString& program, int percent) {
                              done_ += program.toStdString() + std::to_string(percent) + " ";
                              history_.volumeChanged(program, 1, percent);
                              history_.volumeReleased(program);
                          },
                          [this](const QString& program, bool muted) {
                              done_ += program.toStdString() + (muted ? " muted " : " unmuted ");
                              history_.muteChanged(program, muted);
                          },
                          [this](const QString& process, bool ignored) {
                              done_ += process.toStdString() + (ignored ? " ignored " : " shown ");
                              history_.ignoredChanged(process, ignored);
                          }},
                         [this] { ++changes_; }};
};

} // namespace

TEST_F(UndoHistoryTest, GesturesAreTakenBackFromTheLastAndDoneAgain) {
    drag("a", {100, 80, 30});
    history_.muteChanged("b", true);
    history_.ignoredChanged("c", true);
    EXPECT_EQ(history_.undoText(), "Ignore \"c\"");
    for (int times = 0; times < 4; ++times)
        history_.undo();
    EXPECT_EQ(done(), "c shown b unmuted a100 ");
    EXPECT_FALSE(history_.canUndo());
    EXPECT_EQ(history_.undoText(), QString());
    for (int times = 0; times < 4; ++times)
        history_.redo();
    EXPECT_EQ(done(), "a30 b muted c ignored ");
    EXPECT_FALSE(history_.canRedo());
    history_.undo();
    EXPECT_EQ(history_.redoText(), "Ignore \"c\"");
    EXPECT_EQ(history_.undoText(), "Mute \"b\"");
    history_.muteChanged("b", false);
    EXPECT_FALSE(history_.canRedo()) << "something else has been done";
    EXPECT_EQ(history_.undoText(), "Unmute \"b\"");
    EXPECT_GE(changes_, 11);
}

TEST_F(UndoHistoryTest, MovesThatBelongTogetherAreOne) {
    drag("a", {100, 99});
    clock_.advance(900ms);
    drag("a", {99, 98});
    history_.volumeChanged("a", 98, 50);
    clock_.advance(1h); // held
    history_.volumeChanged("a", 50, 40);
    history_.volumeReleased("a");
    clock_.advance(1s);
    drag("a", {40, 20});
    drag("b", {100, 10});
    drag("a", {20, 25});
    for (int times = 0; times < 5; ++times)
        history_.undo();
    EXPECT_EQ(done(), "a20 b100 a40 a100 ");
}

TEST_F(UndoHistoryTest, AMoveAfterAnUndoIsASeparateAction) {
    drag("a", {100, 50});
    drag("b", {100, 50});
    history_.undo();
    drag("a", {50, 30});
    history_.undo();
    EXPECT_EQ(done(), "b100 a50 ");
}

TEST_F(UndoHistoryTest, WhatComesBackToWhereItWasIsNoGesture) {
    drag("a", {100, 50, 100});
    EXPECT_FALSE(history_.canUndo());
    drag("a", {100, 100});
    EXPECT_FALSE(history_.canUndo());
}

TEST_F(UndoHistoryTest, TheOldestIsForgotten) {
    for (std::size_t count = 0; count < UndoHistory::most + 5; ++count)
        history_.muteChanged(QString::number(count), true);
    std::size_t undone = 0;
    for (; history_.canUndo(); ++undone)
        history_.undo();
    EXPECT_EQ(undone, UndoHistory::most);
    EXPECT_TRUE(done().ends_with(" 5 unmuted "));
}
