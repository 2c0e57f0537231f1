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
    PlainPane(QString label, const QSize& size, QStringList& events, bool canResize = false)
        : label_(std::move(label)), size_(size), events_(events), canResize_(canResize) {}

    QString label() const override { return label_; }
    QIcon icon() const override { return {}; }
    QString identifier() const override { return label_; }
    bool canResizeWindow() const override { return canResize_; }
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
    const bool canResize_;
};

using Pane = std::shared_ptr<QNPreferencesItemViewController>;

class PreferencesWindowTest : public testing::Test {
  protected:
    void addPanes() {
        controller_.addController(small_);
        controller_.addController(large_);
    }

    void click(const char* identifier) const {
        QTest::mouseClick(controller_.itemForItemIdentifier(identifier), Qt::LeftButton);
    }

    QWidget& window() const { return controller_.window(); }

    QStringList events_;
    platform::UserDefaults defaults_{{}};
    const Pane small_ =
        QNPreferencesItemViewController::controller<PlainPane>("Small", QSize(200, 100), events_);
    const Pane large_ = QNPreferencesItemViewController::controller<PlainPane>(
        "Large", QSize(500, 300), events_, true);
    QNPreferencesWindowController controller_{"Some", 0, defaults_};
};

} // namespace

TEST_F(PreferencesWindowTest, ShowsTheFirstPaneAndThenThatOfTheItemThatIsChosen) {
    addPanes();
    EXPECT_EQ(controller_.selectedController(), nullptr);
    controller_.showWindow();
    EXPECT_EQ(controller_.selectedController(), small_);
    EXPECT_TRUE(small_->view().isVisible());
    EXPECT_EQ(small_->view().size(), QSize(200, 100));
    const QRect before = window().geometry();

    click("Large");
    EXPECT_FALSE(small_->view().isVisible());
    EXPECT_TRUE(controller_.itemForItemIdentifier("Large")->isChecked());
    EXPECT_FALSE(controller_.itemForItemIdentifier("Small")->isChecked());
    ASSERT_TRUE(support::waitUntil([&] { return window().height() == before.height() + 200; }));
    QCoreApplication::sendPostedEvents();
    EXPECT_EQ(large_->view().size(), QSize(500, 300));
    EXPECT_EQ(window().pos(), before.topLeft()) << "the upper edge stays";
    EXPECT_EQ(window().minimumSize(), window().maximumSize());

    QTest::keyClick(controller_.itemForItemIdentifier("Large"), Qt::Key_Left);
    EXPECT_EQ(controller_.selectedController(), small_);
    QTest::keyClick(controller_.itemForItemIdentifier("Small"), Qt::Key_Left);
    EXPECT_EQ(controller_.selectedController(), small_);
    EXPECT_EQ(events_, (QStringList{"select Small", "select Large", "select Small"}));
}

TEST_F(PreferencesWindowTest, IsNeverNarrowerThanItsToolbar) {
    QStringList all;
    for (int i = 0; i < 6; ++i) {
        all += QString("Voreinstellungen %1").arg(i);
        controller_.addController(QNPreferencesItemViewController::controller<PlainPane>(
            all.last(), QSize(50, 50), events_));
    }
    controller_.showWindow();
    QCoreApplication::sendPostedEvents();
    EXPECT_GE(window().width(), controller_.minimumViewWidth());
    EXPECT_EQ(controller_.toolbarAllowedItemIdentifiers(), all);
    for (const QString& each : all) {
        const QNObjToolbarItem& item = *controller_.itemForItemIdentifier(each);
        EXPECT_GE(item.width(), item.fontMetrics().horizontalAdvance(item.label()));
        EXPECT_TRUE(window().rect().contains(QRect(item.mapTo(&window(), QPoint()), item.size())));
    }
}

TEST_F(PreferencesWindowTest, CanBeResizedOnlyIfWindowAndPaneCan) {
    QNPreferencesWindowController other("Other", QNPreferencesWindowController::resizable,
                                        defaults_);
    other.addController(small_);
    other.addController(large_);
    other.showWindow();
    const QSize size = other.window().size();
    EXPECT_EQ(other.windowWillResize({900, 900}), size);
    other.selectController(large_);
    ASSERT_TRUE(support::waitUntil(
        [&] { return other.window().maximumSize() != other.window().minimumSize(); }));
    EXPECT_EQ(other.windowWillResize({900, 900}), QSize(900, 900));
    EXPECT_GE(other.windowWillResize({1, 1}).width(), 500);
}

TEST_F(PreferencesWindowTest, AppearsWhereItWasLeft) {
    addPanes();
    controller_.showWindow();
    const QRect screen = window().screen()->availableGeometry();
    EXPECT_LE((window().geometry().center() - screen.center()).manhattanLength(), 2);
    window().move(123, 45);
    QTest::qWait(0);
    EXPECT_EQ(defaults_.text("QNPrefWindow-Some"), "{123, 45}");
    window().close();
    window().move(1, 1);
    EXPECT_EQ(defaults_.text("QNPrefWindow-Some"), "{123, 45}") << "nobody sees it";
    controller_.showWindow();
    EXPECT_EQ(window().pos(), QPoint(123, 45));
    for (const auto& [text, isRestored] :
         {std::pair{"nonsense", false}, {"{90000, -7000}", true}}) {
        window().close();
        defaults_.set("QNPrefWindow-Some", text);
        controller_.showWindow();
        EXPECT_TRUE(screen.intersects(window().geometry())) << text;
        EXPECT_EQ(window().geometry().right() >= screen.right(), isRestored) << text;
    }
}

TEST_F(PreferencesWindowTest, MovesUpWhereTheNextPaneWouldEndBelowTheScreen) {
    addPanes();
    controller_.showWindow();
    const QRect screen = window().screen()->availableGeometry();
    window().move(50, screen.bottom() - window().height());
    controller_.selectController(large_);
    ASSERT_TRUE(support::waitUntil([&] { return window().height() > 300; }));
    EXPECT_EQ(window().x(), 50);
    EXPECT_TRUE(support::waitUntil([&] { return window().geometry().bottom() == screen.bottom(); }))
        << window().geometry().bottom();
}

TEST_F(PreferencesWindowTest, EscapeAndCtrlWCloseItAndEveryPaneIsTold) {
    addPanes();
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
    addPanes();
    controller_.showWindow();
    controller_.selectController(large_);
    controller_.removeController(large_);
    EXPECT_EQ(controller_.selectedController(), small_);
    EXPECT_EQ(controller_.controllers(), QList<Pane>{small_});
    EXPECT_EQ(controller_.itemForItemIdentifier("Large"), nullptr);
    controller_.removeController(small_);
    EXPECT_EQ(controller_.selectedController(), nullptr);
    EXPECT_TRUE(window().isVisible());
}
