#include "platform/bus/NotificationCenter.h"
#include "platform/loop/MainQueue.h"
#include "platform/loop/RunLoop.h"
#include "support/WaitUntil.h"
#include "ui/items/SliderGeometry.h"
#include "ui/items/TNVolumeSlider.h"

#include <QPaintEvent>
#include <QPainter>
#include <QTest>

#include <gtest/gtest.h>

#include <utility>
#include <vector>

// 220 pixels are 200 for the knob's way.
TEST(SliderGeometry, AValueIsWhereTheKnobsCentreIs) {
    const SliderGeometry parts(QRectF(0, 0, 220, 24));
    EXPECT_FALSE(parts.isVertical());
    EXPECT_EQ(parts.knobRect(0.5), QRectF(100, 2, 20, 20));
    EXPECT_EQ(parts.knobRect(0.999), QRectF(199, 2, 20, 20)) << "on whole pixels";
    EXPECT_EQ(parts.knobCenter(1.0), 210);
    EXPECT_EQ(parts.valueAt({10, 0}), 0.0F);
    EXPECT_EQ(parts.valueAt({110, 0}), 0.5F);
    EXPECT_EQ(parts.valueAt({210, 0}), 1.0F);
    EXPECT_EQ(parts.valueDragged(0.25, {60, 5}, {160, 9}), 0.75F);
    EXPECT_EQ(parts.valueDragged(0.25, {60, 5}, {1000, 9}), 1.0F);
    EXPECT_EQ(parts.trackRect(12), QRectF(0.5, 6.5, 219, 11));
}

TEST(SliderGeometry, AVerticalOneGrowsUpwards) {
    const SliderGeometry parts(QRectF(0, 0, 30, 220));
    EXPECT_TRUE(parts.isVertical());
    EXPECT_EQ(parts.knobRect(0.0), QRectF(5, 200, 20, 20));
    EXPECT_EQ(parts.knobRect(1.0), QRectF(5, 0, 20, 20));
    EXPECT_EQ(parts.valueAt({15, 210}), 0.0F);
    EXPECT_EQ(parts.valueDragged(0.5, {15, 100}, {15, 50}), 0.75F);
    const QRectF start = parts.piece(parts.trackRect(10), 0, 50);
    EXPECT_EQ(start.top(), 170);
    EXPECT_EQ(start.bottom(), 219.5);
}

TEST(SliderGeometry, OneThatIsNoLongerThanItsKnobHasTwoValues) {
    const SliderGeometry parts(QRectF(0, 0, 20, 20));
    EXPECT_EQ(parts.valueAt({10, 0}), 0.0F) << "not a number";
    EXPECT_EQ(parts.valueAt({11, 0}), 1.0F);
    EXPECT_EQ(parts.valueAt({9, 0}), 0.0F);
}

namespace {

class SliderTest : public testing::Test {
  protected:
    SliderTest() {
        slider_.resize(220, 24);
        slider_.show();
        slider_.setHandler([this] { values_.push_back(slider_.floatValue()); });
    }

    void press(int x) { QTest::mousePress(&slider_, Qt::LeftButton, {}, QPoint(x, 12)); }
    void move(int x) { QTest::mouseMove(&slider_, QPoint(x, 12)); }
    void release(int x) { QTest::mouseRelease(&slider_, Qt::LeftButton, {}, QPoint(x, 12)); }

    /// What is at the middle of the track.
    QColor colorAt(int x) { return slider_.grab().toImage().pixelColor(x, 12); }

    platform::RunLoop loop_;
    platform::MainQueueService mainQueue_{loop_};
    TNVolumeSlider slider_;
    std::vector<float> values_; // that the handler has seen
    int releases_ = 0;          // of the slider
    platform::NotificationObserver observer_{"MVVolumeSliderDidReleaseMouseNotification",
                                             [this](const QVariant& object) {
                                                 if (object.value<QObject*>() == &slider_)
                                                     ++releases_;
                                             }};
};

} // namespace

TEST_F(SliderTest, BeginsAtTheRightWhereTextDoes) {
    slider_.setLayoutDirection(Qt::RightToLeft);
    const auto click = [&](int x) {
        QTest::mouseClick(&slider_, Qt::LeftButton, {}, QPoint(x, 12));
        return slider_.floatValue();
    };
    EXPECT_EQ(click(210), 0.0F);
    EXPECT_EQ(click(10), 1.0F);
    EXPECT_EQ(click(60), 0.75F);
    QTest::keyClick(&slider_, Qt::Key_Left);
    EXPECT_EQ(slider_.percent(), 76);
    QTest::keyClick(&slider_, Qt::Key_Right);
    EXPECT_EQ(slider_.percent(), 75);
    const QImage image = slider_.grab().toImage();
    EXPECT_GT(image.pixelColor(60, 12).lightness(), 150) << "the knob is drawn there too";
    EXPECT_LT(image.pixelColor(160, 12).lightness(), 100);
}

TEST_F(SliderTest, APressBesideTheKnobMovesItThereAndOneOnItDoesNot) {
    slider_.showValue(0.3F);
    EXPECT_TRUE(values_.empty()) << "shown, not set";
    for (const auto& [x, value] : {std::pair{10, 0.0F}, {110, 0.5F}, {210, 1.0F}}) {
        press(x);
        EXPECT_EQ(slider_.floatValue(), value);
        release(x);
    }
    press(203);
    release(203);
    EXPECT_EQ(slider_.floatValue(), 1.0F);
    slider_.setFloatValue(7.5F);
    EXPECT_EQ(slider_.floatValue(), 7.5F) << "as it is";
}

TEST_F(SliderTest, ADragFollowsTheMouseFromWhereItBegan) {
    slider_.showValue(0.25F);
    press(65); // a bit beside the knob's centre
    move(115);
    EXPECT_EQ(slider_.floatValue(), 0.5F);
    move(165);
    EXPECT_EQ(slider_.floatValue(), 0.75F);
    move(900);
    EXPECT_EQ(slider_.floatValue(), 1.0F);
    slider_.showValue(0.1F);
    EXPECT_EQ(slider_.floatValue(), 1.0F) << "it is held";
    release(165);
    EXPECT_EQ(values_, (std::vector<float>{0.25F, 0.5F, 0.75F, 1.0F, 0.75F, 0.75F}));
    move(10);
    QTest::mousePress(&slider_, Qt::RightButton, {}, QPoint(10, 12));
    EXPECT_EQ(slider_.floatValue(), 0.75F);
}

TEST_F(SliderTest, ADragEndsWithOneNotificationAfterItsEvent) {
    press(110);
    move(120);
    release(120);
    EXPECT_EQ(releases_, 0);
    support::serveEvents();
    support::serveEvents();
    EXPECT_EQ(releases_, 1);
    press(20);
    slider_.hide(); // gets no release
    slider_.show();
    support::serveEvents();
    EXPECT_EQ(releases_, 2);
    EXPECT_FALSE(slider_.isInDrag());
}

TEST_F(SliderTest, StepsOfAssistiveToolsAreWholeGestures) {
    slider_.showValue(0.85F);
    slider_.increment();
    EXPECT_NEAR(slider_.floatValue(), 0.95F, 1e-6);
    slider_.increment();
    EXPECT_EQ(slider_.floatValue(), 1.0F);
    EXPECT_EQ(values_.size(), 4U) << "twice each";
    slider_.showValue(0.05F);
    slider_.decrement();
    EXPECT_EQ(slider_.floatValue(), 0.0F);
    support::serveEvents();
    EXPECT_EQ(releases_, 3);
}

TEST_F(SliderTest, AKeyThatIsHeldIsOneGesture) {
    slider_.showValue(0.5F);
    QTest::keyPress(&slider_, Qt::Key_Right);
    QTest::keyPress(&slider_, Qt::Key_Right);
    support::serveEvents();
    EXPECT_EQ(releases_, 0);
    QTest::keyRelease(&slider_, Qt::Key_Right);
    support::serveEvents();
    EXPECT_EQ(releases_, 1);
    EXPECT_EQ(values_.size(), 2U);
    EXPECT_NEAR(slider_.floatValue(), 0.52F, 1e-6);
}

TEST_F(SliderTest, TheLevelsBarEndsAtTheKnobsCentreAtMost) {
    slider_.showValue(0.5F);
    const QColor before = colorAt(40);
    slider_.setActivity(0.5F); // of 110 pixels
    const QColor bar = colorAt(40);
    EXPECT_NE(bar, before);
    EXPECT_EQ(colorAt(47), bar);
    EXPECT_EQ(colorAt(58), before);
    slider_.setActivity(1.0F);
    EXPECT_EQ(colorAt(95), bar);
    EXPECT_EQ(colorAt(130), before);
    slider_.setMuted(true);
    const QColor muted = colorAt(40);
    EXPECT_NE(muted, bar);
    EXPECT_EQ(muted.red(), muted.blue()) << "gray";
    slider_.setActivity(0.0F);
    EXPECT_EQ(colorAt(40), before);
}

namespace {

/// What is on the screen: only what the widget asks for is drawn anew.
class Screen final : public QObject {
  public:
    explicit Screen(QWidget& widget) : widget_(widget), image_(widget.grab().toImage()) {
        widget.installEventFilter(this);
    }

    const QImage& image() {
        const QRegion region = std::exchange(damage_, {});
        for (const QRect& rect : region)
            QPainter(&image_).drawPixmap(rect.topLeft(), widget_.grab(rect));
        return image_;
    }

    /// Pictures that are taken are drawn too.
    void forgetDamage() { damage_ = {}; }

    int damagedWidth() const { return damage_.boundingRect().width(); }

  private:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Paint)
            damage_ += static_cast<QPaintEvent*>(event)->region();
        return false;
    }

    QWidget& widget_;
    QImage image_;
    QRegion damage_;
};

} // namespace

TEST_F(SliderTest, ALevelDrawsOnlyWhatChangesAndAllOfThat) {
    slider_.showValue(0.8F);
    slider_.setActivity(0.5F);
    support::serveEvents();
    Screen screen(slider_);
    for (const float level : {0.9F, 0.2F, 0.61F, 0.02F, 0.35F}) {
        screen.forgetDamage();
        slider_.setActivity(level);
        support::serveEvents();
        EXPECT_GT(screen.damagedWidth(), 0);
        EXPECT_LT(screen.damagedWidth(), 200);
        ASSERT_EQ(screen.image(), slider_.grab().toImage()) << level;
    }
}

TEST_F(SliderTest, TheBaseSliderShowsItsBarBeforeTheKnobToo) {
    MVVolumeSlider plain;
    plain.resize(30, 220);
    plain.showValue(0.5F);
    const auto colorAt = [&](int y) { return plain.grab().toImage().pixelColor(15, y); };
    const QColor silent = colorAt(200);
    plain.setActivity(0.5F); // the lowest 55 pixels
    EXPECT_EQ(colorAt(200), colorAt(180));
    EXPECT_NE(colorAt(200), colorAt(150)) << "the rest of the track";
    EXPECT_NE(colorAt(150), silent) << "which is lighter while something plays";
}
