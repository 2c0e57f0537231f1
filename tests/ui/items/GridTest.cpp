#include "ui/items/MVCollectionView.h"

#include "look/theme/LighterColor.h"
#include "platform/loop/MainQueue.h"
#include "platform/loop/RunLoop.h"
#include "support/ManualClock.h"
#include "support/VolumeModel.h"
#include "support/WaitUntil.h"
#include "ui/items/ItemAnimation.h"
#include "ui/items/ItemLayout.h"
#include "ui/items/MVCollectionViewItem.h"

#include <QTest>

#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

constexpr int rowHeight = ItemLayout::height;

class PlainTheme final : public MVBlackTheme {
  public:
    double windowNonKeyLightenBy() const override { return 0.5; }
};

class GridTest : public testing::Test {
  protected:
    void fill(MVCollectionView& grid, int count) {
        QList<RunningApplication> running;
        for (int i = 0; i < count; ++i)
            running.append({static_cast<std::uint32_t>(i + 1), QString::number(i), {}});
        model_.workspace.setRunningApplications(running);
        MVCollectionView::Items items;
        for (MVCommAppValue* const app : model_.controller.apps())
            items.push_back(std::make_unique<MVCollectionViewItem>(
                MVCollectionViewItem::Dependencies{model_.controller, {}, [] { return false; }, {}},
                *app));
        grid.setItems(std::move(items));
    }

    platform::RunLoop loop_;
    platform::MainQueueService mainQueue_{loop_};
    support::VolumeModel model_;
};

} // namespace

TEST_F(GridTest, ThereAreAsManyColumnsAsFitAndTheyShareTheWidth) {
    EXPECT_EQ(MVCollectionView::columnsFor(0), 1);
    EXPECT_EQ(MVCollectionView::columnsFor(599), 1);
    EXPECT_EQ(MVCollectionView::columnsFor(600), 2);
    MVCollectionView grid;
    fill(grid, 7);
    EXPECT_EQ(grid.heightForWidth(400), 7 * rowHeight);
    EXPECT_EQ(grid.heightForWidth(1000), 3 * rowHeight);
    grid.resize(1000, 3 * rowHeight);
    grid.show();
    EXPECT_EQ(grid.items()[0]->geometry(), QRect(0, 0, 333, rowHeight));
    EXPECT_EQ(grid.items()[2]->geometry(), QRect(666, 0, 334, rowHeight)) << "to the edge";
    EXPECT_EQ(grid.items()[4]->geometry(), QRect(333, rowHeight, 333, rowHeight));
    grid.setLayoutDirection(Qt::RightToLeft);
    EXPECT_EQ(grid.items()[0]->geometry().right(), 999);
}

TEST_F(GridTest, RowsTakeTurnsInTheThemesColoursWhichAreLighterWithoutTheKeys) {
    const PlainTheme theme;
    QWidget window;
    MVCollectionView grid(&window, &theme);
    grid.resize(300, 2 * rowHeight);
    const auto colorAt = [&](int y) { return grid.grab().toImage().pixelColor(2, y).rgb(); };
    ASSERT_FALSE(grid.isActiveWindow());
    EXPECT_EQ(colorAt(2), lighterBy(whiteColor(0.1), 0.5).rgb());
    EXPECT_EQ(colorAt(rowHeight + 2), lighterBy(whiteColor(0.125), 0.5).rgb());
    window.show();
    window.activateWindow();
    ASSERT_TRUE(support::waitUntil([&] { return grid.isActiveWindow(); }));
    EXPECT_EQ(colorAt(2), whiteColor(0.1).rgb());
}

TEST_F(GridTest, ThePatternHasNoSeamsWhereverOnlyAPartIsDrawn) {
    MVCollectionView grid;
    grid.resize(300, 120);
    const QImage whole = grid.grab().toImage();
    EXPECT_NE(whole.pixelColor(0, 0), whole.pixelColor(0, 2)) << "a pattern";
    EXPECT_EQ(whole.copy(0, 0, 8, 6), whole.copy(8 * 20, 6 * 15, 8, 6));
    const QRect part(37, 41, 100, 50);
    EXPECT_EQ(grid.grab(part).toImage(), whole.copy(part));
}

TEST_F(GridTest, ItemsGoStraightToTheirPlacesWhileTheWindowIsResized) {
    support::ManualClock clock;
    MVCollectionView grid;
    fill(grid, 3);
    grid.resize(400, 400);
    grid.show();
    clock.advance(1s);
    EXPECT_FALSE(grid.isInLiveResize());
    grid.resize(700, 400);
    EXPECT_TRUE(grid.isInLiveResize());
    EXPECT_EQ(grid.items()[1]->pos(), QPoint(350, 0));
}

TEST(ItemAnimation, ThereIsNoneAtFirstNorWhileResizingNorForWhoWantsNone) {
    EXPECT_GT((ItemAnimation{.sinceStart = 1s}).duration(), 0ms);
    EXPECT_EQ((ItemAnimation{.sinceStart = 999ms}).duration(), 0ms);
    EXPECT_EQ((ItemAnimation{.sinceStart = 1h, .isInLiveResize = true}).duration(), 0ms);
    EXPECT_EQ((ItemAnimation{.sinceStart = 1h, .isEnabled = false}).duration(), 0ms);
}
