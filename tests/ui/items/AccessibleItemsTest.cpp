#include "ui/items/AccessibleItems.h"
#include "platform/loop/MainQueue.h"
#include "platform/loop/RunLoop.h"
#include "support/VolumeModel.h"
#include "ui/items/MVCollectionViewImageView.h"
#include "ui/items/MVCollectionViewItem.h"
#include "ui/items/MVMuteImageView.h"
#include "ui/items/MVVolumeSlider.h"

#include <QAccessible>

#include <gtest/gtest.h>

namespace {

class AccessibleItemsTest : public testing::Test {
  protected:
    AccessibleItemsTest() {
        installAccessibleItems();
        model_.workspace.setRunningApplications(
            {{1, QStringLiteral("Safari"), {}, QStringLiteral("/opt/safari")}});
        item_ = std::make_unique<MVCollectionViewItem>(
            MVCollectionViewItem::Surroundings{model_.controller, {}, [] { return false; }, {}},
            *model_.controller.apps()[0]);
        item_->show();
    }

    static QAccessibleInterface& of(QObject* object) {
        return *QAccessible::queryAccessibleInterface(object);
    }

    platform::RunLoop loop_;
    platform::MainQueueService mainQueue_{loop_};
    support::VolumeModel model_;
    std::unique_ptr<MVCollectionViewItem> item_;
};

} // namespace

TEST_F(AccessibleItemsTest, TheSliderHasATitleARangeAndSteps) {
    QAccessibleInterface& slider = of(&item_->slider());
    EXPECT_EQ(slider.role(), QAccessible::Slider);
    EXPECT_EQ(slider.text(QAccessible::Name), QStringLiteral("Volume"));
    QAccessibleValueInterface& value = *slider.valueInterface();
    EXPECT_EQ(value.currentValue().toDouble(), 1.0);
    EXPECT_EQ(value.minimumValue().toDouble(), 0.0);
    EXPECT_EQ(value.maximumValue().toDouble(), 1.0);
    QAccessibleActionInterface& actions = *slider.actionInterface();
    actions.doAction(QAccessibleActionInterface::decreaseAction());
    EXPECT_NEAR(value.currentValue().toDouble(), 0.9, 1e-6);
    EXPECT_EQ(model_.controller.percentOf(*model_.controller.apps()[0]), 89) << "sent";
    actions.doAction(QAccessibleActionInterface::increaseAction());
    EXPECT_EQ(value.currentValue().toDouble(), 1.0);
    value.setCurrentValue(0.25);
    EXPECT_EQ(model_.controller.percentOf(*model_.controller.apps()[0]), 25);
    item_->slider().setActivity(0.5F);
    EXPECT_EQ(value.currentValue().toDouble(), 0.25) << "not the level";
    item_->slider().setEnabled(false);
    actions.doAction(QAccessibleActionInterface::decreaseAction());
    EXPECT_EQ(value.currentValue().toDouble(), 0.25);
}

TEST_F(AccessibleItemsTest, TheSpeakerIsACheckBoxThatCanBePressed) {
    QAccessibleInterface& mute = of(&item_->muteView());
    EXPECT_EQ(mute.role(), QAccessible::CheckBox);
    EXPECT_EQ(mute.text(QAccessible::Name), QStringLiteral("Mute"));
    EXPECT_TRUE(mute.state().checkable);
    EXPECT_FALSE(mute.state().checked);
    mute.actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_TRUE(mute.state().checked);
    EXPECT_TRUE(model_.controller.apps()[0]->muted());
}

TEST_F(AccessibleItemsTest, AnItemIsNamedByItsProgramAndHoldsNoDecoration) {
    QAccessibleInterface& item = of(item_.get());
    EXPECT_EQ(item.role(), QAccessible::ListItem);
    EXPECT_EQ(item.text(QAccessible::Name), QStringLiteral("Safari"));
    QList<QAccessible::Role> roles;
    for (int i = 0; i < item.childCount(); ++i) {
        roles += item.child(i)->role();
        EXPECT_EQ(item.indexOfChild(item.child(i)), i);
    }
    EXPECT_EQ(roles, (QList{QAccessible::StaticText, QAccessible::CheckBox, QAccessible::Slider}));
    EXPECT_TRUE(of(item_->findChild<MVCollectionViewImageView*>()).state().invisible);
}

TEST_F(AccessibleItemsTest, WhatTheTipTellsIsTold) {
    const QAccessibleInterface& item = of(item_.get());
    const QAccessibleInterface& slider = of(&item_->slider());
    model_.workspace.setReason(QStringLiteral("Safari"), QStringLiteral("For a\nreason."));
    EXPECT_EQ(item.text(QAccessible::Description), QStringLiteral("/opt/safari\nFor a reason."));
    EXPECT_EQ(slider.text(QAccessible::Description), QString()) << "the value is told anyway";
    model_.controller.notControllable(1, QStringLiteral("It plays past the mixer"));
    EXPECT_EQ(item.text(QAccessible::Description),
              QStringLiteral("/opt/safari\nFor a reason.\nIt plays past the mixer"));
    EXPECT_EQ(slider.text(QAccessible::Description), QStringLiteral("It plays past the mixer"));
    EXPECT_EQ(slider.text(QAccessible::Name), QStringLiteral("Volume"));
}
