#include "look/window/QNToolTip.h"

#include "look/theme/CurrentTheme.h"
#include "platform/loop/RunLoop.h"

#include <QApplication>
#include <QHelpEvent>
#include <QScreen>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>

namespace {

class ToolTipTest : public testing::Test {
  public:
    ~ToolTipTest() override { QNToolTip::shared().hide(); }

  protected:
    ToolTipTest() {
        window_.setGeometry(100, 100, 300, 200);
        owner_->setGeometry(50, 50, 100, 40);
        window_.show();
        window_.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window_));
        show();
    }

    void show(const QString& text = "Some text") {
        QNToolTip::shared().setText(text);
        QNToolTip::shared().showAt(owner_->mapToGlobal(QPoint(5, 5)), *owner_);
    }

    static bool isShown() { return QNToolTip::shared().isVisible(); }

    QWidget window_;
    QWidget* owner_ = new QWidget(&window_);
    QWidget* other_ = new QWidget(&window_);
};

} // namespace

TEST_F(ToolTipTest, ItDisappearsOnUserInputAndWithItsOwner) {
    EXPECT_TRUE(isShown());
    EXPECT_EQ(QApplication::activeWindow(), &window_);
    QTest::mouseMove(owner_, {20, 20});
    EXPECT_TRUE(isShown()) << "the mouse is still there";
    const auto goesBy = [this](const auto& use) {
        show();
        EXPECT_TRUE(isShown());
        use();
        return !isShown();
    };
    EXPECT_TRUE(goesBy([&] { QTest::keyClick(&window_, Qt::Key_Down); }));
    EXPECT_TRUE(goesBy([&] { QTest::mousePress(owner_, Qt::LeftButton); }));
    EXPECT_TRUE(goesBy([&] {
        QEvent leave(QEvent::Leave);
        QApplication::sendEvent(owner_, &leave);
    }));
    EXPECT_TRUE(goesBy([&] { QTest::mouseMove(other_, {1, 1}); }));
    EXPECT_TRUE(goesBy([&] { show({}); }));
    EXPECT_TRUE(goesBy([&] { delete owner_; }));
}

TEST_F(ToolTipTest, ItStaysWhenAFormerOwnerIsDestroyed) {
    QNToolTip::shared().showAt(other_->mapToGlobal(QPoint(5, 5)), *other_);
    delete owner_;
    EXPECT_TRUE(isShown());
    delete other_;
    EXPECT_FALSE(isShown());
}

TEST_F(ToolTipTest, ItLiesBesideTheMouseOnItsScreenAndWrapsWhatIsLong) {
    const QRect screen = window_.screen()->geometry();
    const QWidget& tip = QNToolTip::shared();
    const int line = tip.height();
    for (const QPoint& mouse : {screen.topLeft(), screen.bottomRight(), screen.center()}) {
        QNToolTip::shared().setText(QString(200, QLatin1Char('/')));
        QNToolTip::shared().showAt(mouse, *owner_);
        EXPECT_TRUE(screen.contains(tip.geometry()));
        EXPECT_FALSE(tip.geometry().contains(mouse));
        EXPECT_GT(tip.height(), line);
    }
}

TEST_F(ToolTipTest, ItHasTheColoursOfTheTheme) {
    const QImage image = QNToolTip::shared().grab().toImage();
    EXPECT_EQ(image.pixelColor(3, 3), CurrentTheme::theme().scrollerTrackBackgroundColor());
}
