#include "ui/items/MVCollectionViewItem.h"

#include "look/window/QNToolTip.h"
#include "platform/loop/MainQueue.h"
#include "platform/loop/RunLoop.h"
#include "support/SystemLogRecorder.h"
#include "support/VolumeModel.h"
#include "support/WaitUntil.h"
#include "ui/items/AccessibleItems.h"
#include "ui/items/ItemLayout.h"
#include "ui/items/ItemStatus.h"
#include "ui/items/MVCollectionViewImageView.h"
#include "ui/items/MVCollectionViewTextField.h"
#include "ui/items/MVMuteImageView.h"
#include "ui/items/MVVolumeSlider.h"
#include "ui/items/TypedVolume.h"

#include <QAccessible>
#include <QApplication>
#include <QBitmap>
#include <QContextMenuEvent>
#include <QDateTime>
#include <QMenu>
#include <QTest>

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <utility>
#include <variant>
#include <vector>

namespace {

/// An item of the program Safari that plays nothing.
class ItemTest : public testing::Test {
  protected:
    ItemTest() {
        model_.workspace.setRunningApplications({{1, "Safari", {}}});
        show(*model_.controller.apps().at(0));
    }

    void show(MVCommAppValue& app) {
        app_ = &app;
        item_ = std::make_unique<MVCollectionViewItem>(
            MVCollectionViewItem::Dependencies{
                model_.controller, [this](const QString& name) { ignored_ = name; },
                [this] { return mayBeep_; }, [this](float volume) { beeps_.push_back(volume); }},
            app);
        item_->resize(400, ItemLayout::height);
        item_->show();
        log_.clear();
    }

    void clickSliderInTheMiddle() {
        MVVolumeSlider& slider = item_->slider();
        QTest::mouseClick(&slider, Qt::LeftButton, {}, QPoint(slider.width() / 2, 10));
        support::serveEvents();
    }

    support::SystemLogRecorder log_;
    platform::RunLoop loop_;
    platform::MainQueueService mainQueue_{loop_};
    support::VolumeModel model_;
    MVCommAppValue* app_ = nullptr;
    QString ignored_;
    bool mayBeep_ = true;
    std::vector<float> beeps_;
    std::unique_ptr<MVCollectionViewItem> item_;
};

} // namespace

TEST_F(ItemTest, TheReleaseOfASilentProgramsSliderIsLoggedAndHeard) {
    clickSliderInTheMiddle();
    EXPECT_EQ(beeps_, std::vector<float>{0.5F});
    EXPECT_EQ(log_.count("'Safari' volume changed to 0.50"), 1U);
    EXPECT_EQ(model_.controller.percentOf(*app_), 50);
    item_->handleActivity(37, 0.37F);
    clickSliderInTheMiddle();
    EXPECT_EQ(beeps_.size(), 1U) << "it plays itself";
    item_->handleActivity(0, 0.0F);
    mayBeep_ = false;
    clickSliderInTheMiddle();
    EXPECT_EQ(beeps_.size(), 1U) << "sample sounds are disabled";
    EXPECT_EQ(log_.count("'Safari' volume changed to 0.50"), 3U);
}

TEST_F(ItemTest, ActivityThatStartsAndStopsIsLoggedOnce) {
    item_->handleActivity(37, 0.375F);
    EXPECT_EQ(item_->slider().activity(), 0.375F);
    item_->handleActivity(52, 0.52F);
    EXPECT_EQ(log_.count("'Safari' gained activity"), 1U);
    item_->handleActivity(0, 0.0F);
    item_->handleActivity(0, 0.0F);
    EXPECT_EQ(item_->slider().activity(), 0.0F);
    EXPECT_EQ(log_.count("'Safari' lost activity"), 1U);
    EXPECT_EQ(log_.lines().size(), 2U);
}

TEST_F(ItemTest, NoBarIsLeftWhenTheRecordGetsAnotherProcess) {
    item_->handleActivity(37, 0.375F);
    model_.workspace.setRunningApplications({{2, "Safari", {}}});
    ASSERT_EQ(item_->representedObject(), app_);
    EXPECT_EQ(item_->slider().activity(), 0.0F);
    EXPECT_EQ(log_.count("'Safari' lost activity"), 1U);
}

TEST_F(ItemTest, TheHintOnSandboxesNamesTheProgram) {
    item_->mouseEntered();
    EXPECT_TRUE(QNToolTip::shared().isVisible());
    EXPECT_TRUE(QNToolTip::shared().text().contains(
        " cannot work with \"Safari\" because it's a sandboxed application.\n\n"
        "Sandboxed apps can be hidden via \"Hide sandboxed applications\" in the "
        "Preferences."));
    MVCollectionViewItem::mouseExited();
    EXPECT_FALSE(QNToolTip::shared().isVisible());
}

TEST_F(ItemTest, ANameFitsItsLineInALargeFontToo) {
    const QFont usual = QApplication::font();
    QFont large = usual;
    large.setPointSize(40);
    QApplication::setFont(large);
    const MVCollectionViewTextField name;
    EXPECT_LE(name.fontMetrics().height(), ItemLayout::nameHeight);
    EXPECT_GT(name.fontMetrics().height(), ItemLayout::nameHeight / 2);
    QApplication::setFont(usual);
}

TEST_F(ItemTest, AClickOnTheSpeakerMutesAndUnmutes) {
    QTest::mouseClick(&item_->muteView(), Qt::LeftButton);
    EXPECT_TRUE(app_->muted());
    EXPECT_TRUE(item_->slider().isMuted());
    EXPECT_TRUE(model_.defaults.dictionary("Apps").value("Safari").toMap().value("Mute").toBool());
    EXPECT_EQ(log_.count("'Safari' muted"), 1U);
    QTest::mouseClick(&item_->muteView(), Qt::RightButton);
    EXPECT_TRUE(app_->muted());
    QTest::mouseClick(&item_->muteView(), Qt::LeftButton);
    EXPECT_FALSE(item_->slider().isMuted());
    EXPECT_EQ(log_.count("'Safari' unmuted"), 1U);
}

TEST_F(ItemTest, AssistiveToolsGetItsPartsInTheirOrderAndTheVolumeNotTheLevel) {
    installAccessibleItems();
    const auto of = [](QObject& object) -> QAccessibleInterface& {
        return *QAccessible::queryAccessibleInterface(&object);
    };
    QAccessibleInterface& item = of(*item_);
    QList<QAccessible::Role> roles;
    for (int i = 0; i < item.childCount(); ++i) {
        roles += item.child(i)->role();
        EXPECT_EQ(item.indexOfChild(item.child(i)), i);
    }
    EXPECT_EQ(roles, (QList{QAccessible::StaticText, QAccessible::CheckBox, QAccessible::Slider}));
    EXPECT_TRUE(of(item_->iconView()).state().invisible) << "decoration";
    QAccessibleInterface& slider = of(item_->slider());
    item_->slider().setActivity(0.5F);
    item_->slider().setEnabled(false);
    slider.actionInterface()->doAction(QAccessibleActionInterface::decreaseAction());
    EXPECT_EQ(slider.valueInterface()->currentValue().toDouble(), 1.0);
}

TEST_F(ItemTest, AssistiveToolsGetTheTextOfTheToolTip) {
    installAccessibleItems();
    model_.workspace.setRunningApplications({});
    model_.workspace.setRunningApplications({{1, "Safari", {}, "/opt/safari"}});
    show(*model_.controller.apps().at(0));
    const auto told = [](QObject& object) {
        return QAccessible::queryAccessibleInterface(&object)->text(QAccessible::Description);
    };
    model_.workspace.setReason("Safari", "For a\nreason.");
    EXPECT_EQ(told(*item_), "100 %\n/opt/safari\nFor a reason.");
    EXPECT_EQ(told(item_->slider()), "") << "the value is told anyway";
    model_.controller.notControllable(1, "It plays past the mixer");
    EXPECT_EQ(told(*item_), "100 %\n/opt/safari\nFor a reason.\nIt plays past the mixer");
    EXPECT_EQ(told(item_->slider()), "It plays past the mixer");
}

TEST_F(ItemTest, TheTipSaysFromWhereTheVolumeWasChangedAndWhen) {
    static platform::WallClock::time_point now;
    const QDateTime noon(QDate(2030, 5, 6), QTime(14, 5));
    now = platform::WallClock::time_point(std::chrono::milliseconds(noon.toMSecsSinceEpoch()));
    platform::WallClock::replaceSource(+[]() noexcept { return now; });
    const auto overSlider = [this] { return item_->tipAt(item_->slider().geometry().center()); };
    EXPECT_EQ(overSlider(), "100 %");
    clickSliderInTheMiddle();
    EXPECT_EQ(overSlider(), "50 %\nLast changed by you here, 14:05");
    EXPECT_EQ(item_->tipAt({}), "Safari\nLast changed by you here, 14:05");
    QTest::keyClick(&item_->slider(), Qt::Key_Left);
    EXPECT_EQ(overSlider(), "49 %\nLast changed by you with a key, 14:05");
    for (const auto& [source, text] :
         {std::pair(ChangeSource::Kind::bus, "50 %\nLast changed over the session bus, 14:05"),
          std::pair(ChangeSource::Kind::tray, "50 %\nLast changed by you in the tray, 14:05")}) {
        const ChangeSource there(source);
        model_.controller.setPercent(*app_, 50);
        EXPECT_EQ(overSlider(), text);
    }
    model_.controller.changedElsewhere(1, {50, false});
    EXPECT_TRUE(overSlider().contains("in the tray")) << "nothing has changed";
    model_.controller.changedElsewhere(1, {60, false});
    now += std::chrono::hours(24);
    EXPECT_EQ(overSlider(), "60 %\nLast changed elsewhere, 06/05/2030 14:05");
    platform::WallClock::replaceSource(nullptr);
}

TEST_F(ItemTest, ANameKeepsItsPlaceWhateverThePercentIsAndGivesWayAt300Pixels) {
    item_->resize(ItemLayout::leastWidth, ItemLayout::height);
    const QRect name = item_->label().geometry();
    const QRect percent = item_->status().percentPlace();
    for (const int each : {0, 7, 88}) {
        model_.controller.setPercent(*app_, each);
        item_->updateControls();
        EXPECT_EQ(item_->status().state().percent, each);
        EXPECT_EQ(item_->label().geometry(), name);
    }
    app_->setActivity(10);
    EXPECT_EQ(item_->label().geometry(), name) << "the sign has its place too";
    app_->setMuted(true);
    EXPECT_LT(item_->label().width(), name.width()) << "the word takes some";
    EXPECT_GT(item_->label().width(), 60);
    EXPECT_EQ(item_->status().percentPlace().size(), percent.size());
    EXPECT_TRUE(item_->rect().contains(item_->status().geometry()));
}

TEST(TypedVolume, TakesPercentsStepsAndTheWordsForMute) {
    const auto percentAt70 = [](const char* text) {
        const auto typed = TypedVolume::parse(QString::fromUtf8(text));
        const auto* const change = typed ? std::get_if<VolumeChange>(&typed->wish) : nullptr;
        return change != nullptr ? change->appliedTo(70) : -1;
    };
    for (const auto& [text, percent] : {std::pair("40", 40),
                                        {" 40 % ", 40},
                                        {"+5", 75},
                                        {"-10", 60},
                                        {"\u221210%", 60},
                                        {"+99", 100},
                                        {"\u0664\u0660", 40},
                                        {"101", -1},
                                        {"", -1},
                                        {"4 0", -1},
                                        {"muted", -1}})
        EXPECT_EQ(percentAt70(text), percent) << text;
    for (const auto& [text, isMuted] :
         {std::pair("mute", true), {" Mute", true}, {"UNMUTE", false}})
        EXPECT_EQ(std::get<TypedVolume::Mute>(TypedVolume::parse(text)->wish).isMuted, isMuted);
}

TEST_F(ItemTest, ANameLooksTheSameWhicheverWayTheDesktopRuns) {
    const auto ink = [](const QString& name, Qt::LayoutDirection direction) {
        QGuiApplication::setLayoutDirection(direction);
        MVCollectionViewTextField field;
        field.resize(120, 28);
        field.setText(name);
        field.setTextColor(Qt::white);
        field.setPalette(QPalette(Qt::black));
        const QImage picture = field.grab().toImage().convertToFormat(QImage::Format_RGB32);
        QGuiApplication::setLayoutDirection(Qt::LeftToRight);
        const QImage mask = picture.createMaskFromColor(qRgb(0, 0, 0), Qt::MaskInColor);
        return picture.copy(QRegion(QBitmap::fromImage(mask)).boundingRect());
    };
    for (const QString& name :
         {QStringLiteral("Web (1.2)"), QStringLiteral("A web browser with a very long name"),
          QStringLiteral("שם (1.2)"), QStringLiteral("שם של תוכנית ארוכה מאוד מאוד מאוד")}) {
        const QImage usual = ink(name, Qt::LeftToRight);
        EXPECT_GT(usual.width(), 20);
        EXPECT_EQ(usual, ink(name, Qt::RightToLeft)) << name.toStdString();
    }
}

TEST_F(ItemTest, TheNamesColourTellsOfActivityAndMute) {
    const auto color = [this] { return item_->label().textColor(); };
    EXPECT_EQ(color(), QColor(103, 103, 103));
    app_->setActivity(10);
    EXPECT_EQ(color().rgb(), QColor::fromRgbF(1.0F, 0.5F, 0.0F).rgb());
    app_->setMuted(true);
    EXPECT_EQ(color(), QColor(128, 65, 0));
    app_->setActivity(0);
    EXPECT_EQ(color(), QColor(103, 103, 103));
}

TEST_F(ItemTest, TheSpeakerIsColouredWhileItPlaysAndStruckThroughWhileMuted) {
    const auto image = [this] { return item_->muteView().grab().toImage(); };
    const auto holds = [&](const QColor& color) {
        const QImage picture = image();
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x)
                if (picture.pixelColor(x, y).rgb() == color.rgb())
                    return true;
        return false;
    };
    const QColor orange = QColor::fromRgbF(1.0F, 0.5F, 0.0F);
    EXPECT_FALSE(holds(orange));
    app_->setActivity(10);
    EXPECT_TRUE(holds(orange));
    const QColor offStrike = image().pixelColor(17, 7);
    app_->setMuted(true);
    EXPECT_FALSE(holds(orange));
    EXPECT_NE(image().pixelColor(17, 7), offStrike) << "the line";
}

TEST_F(ItemTest, TheContextMenuIgnoresTheProgramWhereverItIsOpened) {
    const auto menuAt = [](QWidget& part) -> QMenu* {
        QContextMenuEvent event(QContextMenuEvent::Mouse, part.rect().center(),
                                part.mapToGlobal(part.rect().center()));
        QApplication::sendEvent(&part, &event);
        return qobject_cast<QMenu*>(QApplication::activePopupWidget());
    };
    item_->slider().setEnabled(false); // as one is that cannot be controlled
    for (QWidget* const part :
         {static_cast<QWidget*>(item_.get()), static_cast<QWidget*>(&item_->label()),
          static_cast<QWidget*>(&item_->iconView()), static_cast<QWidget*>(&item_->slider()),
          static_cast<QWidget*>(&item_->muteView())}) {
        QMenu* const menu = menuAt(*part);
        ASSERT_NE(menu, nullptr);
        ASSERT_EQ(menu->actions().size(), 2);
        EXPECT_EQ(menu->actions()[0]->text(), "Ignore \"Safari\"");
        EXPECT_EQ(menu->actions()[1]->text(), "Reset to 100 %");
        EXPECT_FALSE(menu->actions()[1]->isEnabled()) << "there is nothing to reset";
        menu->close();
        ignored_.clear();
        menu->actions()[0]->trigger();
        support::serveEvents();
        EXPECT_EQ(ignored_, "Safari");
    }
    const auto effects =
        MVCommAppValue::initWithRunningApp({2, "coreaudiod", {}}, model_.workspace);
    show(*effects);
    item_->ignore();
    EXPECT_EQ(ignored_, "coreaudiod") << "not what it is shown as";
    item_.reset();
}

TEST_F(ItemTest, AnItemWithoutARecordDoesNothing) {
    model_.workspace.setRunningApplications({});
    log_.clear();
    EXPECT_EQ(item_->representedObject(), nullptr);
    clickSliderInTheMiddle();
    QTest::mouseClick(&item_->muteView(), Qt::LeftButton);
    item_->handleActivity(10, 0.1F);
    item_->ignore();
    item_->grab();
    EXPECT_TRUE(beeps_.empty());
    EXPECT_TRUE(log_.lines().empty());
}

TEST(ItemLayout, PartsDoNotOverlapAndAreMirrored) {
    for (const int width : {ItemLayout::leastWidth, 1200}) {
        const QRect all(0, 0, width, ItemLayout::height);
        const ItemLayout left(all.size(), Qt::LeftToRight, 120);
        const ItemLayout right(all.size(), Qt::RightToLeft, 120);
        const QRect parts[] = {left.icon, left.name, left.status, left.mute, left.slider};
        const QRect mirrored[] = {right.icon, right.name, right.status, right.mute, right.slider};
        for (std::size_t i = 0; i < std::size(parts); ++i) {
            EXPECT_TRUE(all.contains(parts[i])) << i;
            for (std::size_t j = i + 1; j < std::size(parts); ++j)
                EXPECT_FALSE(parts[i].intersects(parts[j])) << i << " and " << j;
            EXPECT_EQ(mirrored[i].left(), width - 1 - parts[i].right()) << i;
            EXPECT_EQ(mirrored[i].size(), parts[i].size()) << i;
        }
    }
}
