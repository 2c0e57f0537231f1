#include "framework/preferences/QNObjToolbarItem.h"
#include "framework/preferences/QNPreferencesItemViewController.h"
#include "framework/preferences/QNPreferencesWindowController.h"
#include "platform/defaults/UserDefaults.h"
#include "support/WaitUntil.h"

#include <QApplication>
#include <QScreen>
#include <QTest>

#include <gtest/gtest.h>

namespace {

/// A pane of a fixed size that writes down what it is told.
class PlainPane final : public QNPreferencesItemViewController {
  public:
    PlainPane(QString label, const QSize& size, QStringList& events)
        : label_(std::move(label)), size_(size), events_(events) {}

    QString label() const override { return label_; }
    QIcon icon() const override { return {}; }
    QString identifier() const override { return label_; }
    bool canResizeWindow() const override { return size_.width() > 400; }
    void willSelect() override { events_ += "select " + label_; }
    void windowWillClose() override { events_ += "close " + label_; }

  private:
    std::unique_ptr<QWidget> loadView() override {
        auto view = std::make_unique<QWidget>();
        view->setMinimumSize(size_);
        return view;
    }

    const QString label_;
    const QSize size_;
    QStringList& events_;
};

using Pane = std::shared_ptr<QNPreferencesItemViewController>;

class PreferencesWindowTest : public testing::Test {
  protected:
    Pane pane(const QString& label, const QSize& size) {
        return QNPreferencesItemViewController::controller<PlainPane>(label, size, events_);
    }
    void show(QNPreferencesWindowController& controller) const {
        controller.addController(small_);
        controller.addController(large_);
        controller.showWindow();
    }
    QNObjToolbarItem* item(const QString& identifier) const {
        return controller_.itemForItemIdentifier(identifier);
    }
    QWidget& window() const { return controller_.window(); }

    QStringList events_;
    platform::UserDefaults defaults_{{}};
    const Pane small_ = pane("Small", {200, 100});
    const Pane large_ = pane("Large", {500, 300}); // can be resized
    QNPreferencesWindowController controller_{"Some", 0, defaults_};
};

} // namespace

TEST_F(PreferencesWindowTest, ShowsTheFirstPaneAndThenThatOfTheItemThatIsChosen) {
    EXPECT_EQ(controller_.selectedController(), nullptr);
    show(controller_);
    EXPECT_EQ(controller_.selectedController(), small_);
    EXPECT_TRUE(small_->view().isVisible());
    EXPECT_EQ(small_->view().size(), QSize(200, 100));
    const QRect before = window().geometry();

    QTest::mouseClick(item("Large"), Qt::LeftButton);
    EXPECT_FALSE(small_->view().isVisible());
    EXPECT_TRUE(item("Large")->isChecked());
    EXPECT_FALSE(item("Small")->isChecked());
    ASSERT_TRUE(support::waitUntil([&] { return window().height() == before.height() + 200; }));
    QCoreApplication::sendPostedEvents();
    EXPECT_EQ(large_->view().size(), QSize(500, 300));
    EXPECT_EQ(window().pos(), before.topLeft()) << "the upper edge stays";
    EXPECT_EQ(window().minimumSize(), window().maximumSize());

    for (const char* const from : {"Large", "Small"}) {
        QTest::keyClick(item(from), Qt::Key_Left);
        EXPECT_EQ(controller_.selectedController(), small_);
    }
    EXPECT_EQ(events_, (QStringList{"select Small", "select Large", "select Small"}));
}

TEST_F(PreferencesWindowTest, IsNeverNarrowerThanItsToolbar) {
    QStringList all;
    for (int i = 0; i < 6; ++i) {
        all += QString("Voreinstellungen %1").arg(i);
        controller_.addController(pane(all.last(), {50, 50}));
    }
    controller_.showWindow();
    QCoreApplication::sendPostedEvents();
    EXPECT_GE(window().width(), controller_.minimumViewWidth());
    EXPECT_EQ(controller_.toolbarAllowedItemIdentifiers(), all);
    for (const QString& each : all) {
        const QNObjToolbarItem& shown = *item(each);
        EXPECT_GE(shown.width(), shown.fontMetrics().horizontalAdvance(each));
        EXPECT_TRUE(
            window().rect().contains(QRect(shown.mapTo(&window(), QPoint()), shown.size())));
    }
}

TEST_F(PreferencesWindowTest, CanBeResizedOnlyIfWindowAndPaneCan) {
    QNPreferencesWindowController other("Other", QNPreferencesWindowController::resizable,
                                        defaults_);
    show(other);
    EXPECT_EQ(other.windowWillResize({900, 900}), other.window().size());
    other.selectController(large_);
    ASSERT_TRUE(support::waitUntil(
        [&] { return other.window().maximumSize() != other.window().minimumSize(); }));
    EXPECT_EQ(other.windowWillResize({900, 900}), QSize(900, 900));
    EXPECT_GE(other.windowWillResize({1, 1}).width(), 500);
}

TEST_F(PreferencesWindowTest, AppearsWhereItWasLeft) {
    const QString key = "QNPrefWindow-Some";
    show(controller_);
    const QRect screen = window().screen()->availableGeometry();
    EXPECT_LE((window().geometry().center() - screen.center()).manhattanLength(), 2);
    window().move(123, 45);
    QTest::qWait(0);
    window().close();
    window().move(1, 1);
    EXPECT_EQ(defaults_.text(key), "{123, 45}") << "nobody sees the second one";
    controller_.showWindow();
    EXPECT_EQ(window().pos(), QPoint(123, 45));
    for (const auto& [text, isRestored] :
         {std::pair{"nonsense", false}, {"{90000, -7000}", true}}) {
        window().close();
        defaults_.set(key, text);
        controller_.showWindow();
        EXPECT_TRUE(screen.intersects(window().geometry())) << text;
        EXPECT_EQ(window().geometry().right() >= screen.right(), isRestored) << text;
    }
}

TEST_F(PreferencesWindowTest, MovesUpWhereTheNextPaneWouldEndBelowTheScreen) {
    show(controller_);
    const int bottom = window().screen()->availableGeometry().bottom();
    window().move(50, bottom - window().height());
    controller_.selectController(large_);
    EXPECT_TRUE(support::waitUntil([&] {
        return window().height() > 300 && window().geometry().bottom() == bottom;
    })) << window().geometry().bottom();
    EXPECT_EQ(window().x(), 50);
}

TEST_F(PreferencesWindowTest, EscapeAndCtrlWCloseItAndEveryPaneIsTold) {
    show(controller_);
    for (const auto& [key, modifier] :
         {std::pair{Qt::Key_Escape, Qt::NoModifier}, {Qt::Key_W, Qt::ControlModifier}}) {
        controller_.showWindow();
        window().activateWindow();
        ASSERT_TRUE(support::waitUntil([&] { return window().isActiveWindow(); }));
        events_.clear();
        QTest::keyClick(&window(), key, modifier);
        EXPECT_FALSE(window().isVisible());
        EXPECT_EQ(events_, (QStringList{"close Small", "close Large"}));
    }
}

TEST_F(PreferencesWindowTest, APaneThatIsRemovedIsReplacedByTheFirst) {
    show(controller_);
    controller_.selectController(large_);
    controller_.removeController(large_);
    EXPECT_EQ(controller_.selectedController(), small_);
    EXPECT_EQ(controller_.controllers(), QList<Pane>{small_});
    EXPECT_EQ(item("Large"), nullptr);
    controller_.removeController(small_);
    EXPECT_EQ(controller_.selectedController(), nullptr);
    EXPECT_TRUE(window().isVisible());
}
