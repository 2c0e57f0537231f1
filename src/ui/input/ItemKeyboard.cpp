#include "ui/input/ItemKeyboard.h"

#include "model/ChangeSource.h"
#include "ui/items/ItemLayout.h"
#include "ui/items/MVCollectionView.h"
#include "ui/items/MVCollectionViewItem.h"
#include "ui/items/MVCollectionViewTextField.h"
#include "ui/items/MVMuteImageView.h"
#include "ui/items/MVVolumeSlider.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QScrollArea>

#include <algorithm>

namespace {

bool hasOtherModifiersThan(const QKeyEvent& event, Qt::KeyboardModifiers allowed) {
    return (event.modifiers() & ~(allowed | Qt::KeypadModifier)) != Qt::NoModifier;
}

} // namespace

std::optional<int> ItemKeyboard::currentIndex() const {
    const QWidget* const focused = grid_.window()->focusWidget();
    const auto& items = grid_.items();
    const auto found = std::ranges::find_if(items, [focused](const auto& item) {
        return focused != nullptr && (focused == item.get() || item->isAncestorOf(focused));
    });
    return found != items.end() ? std::optional(static_cast<int>(found - items.begin()))
                                : std::nullopt;
}

MVCollectionViewItem* ItemKeyboard::current() const {
    const auto index = currentIndex();
    return index ? grid_.items()[static_cast<std::size_t>(*index)].get() : nullptr;
}

void ItemKeyboard::focus(int index) {
    MVCollectionViewItem& item = *grid_.items()[static_cast<std::size_t>(index)];
    const MVCollectionViewItem* const before = current();
    const bool wasMute = before != nullptr && before->muteView().hasFocus();
    QWidget& part = wasMute || !item.slider().isEnabled() ? static_cast<QWidget&>(item.muteView())
                                                          : item.slider();
    part.setFocus(Qt::TabFocusReason);
    area_.ensureWidgetVisible(&item, 0, 0);
}

void ItemKeyboard::restoreFocus(std::optional<int> before) {
    if (!before || currentIndex() || grid_.items().empty())
        return;
    focus(std::min(*before, static_cast<int>(grid_.items().size()) - 1));
}

bool ItemKeyboard::press(const QKeyEvent& event) {
    const ChangeSource source(ChangeSource::Kind::key);
    return act(event) || navigate(event) || find(event);
}

/// What is done to the item that has the focus.
bool ItemKeyboard::act(const QKeyEvent& event) {
    MVCollectionViewItem* const item = current();
    if (item == nullptr)
        return false;
    const bool isMenu = event.key() == Qt::Key_Menu ||
                        (event.key() == Qt::Key_F10 && event.modifiers() == Qt::ShiftModifier);
    if (isMenu) {
        openContextMenu(*item);
        return true;
    }
    // Some keyboards have the digits with Shift.
    if (event.key() == Qt::Key_0 &&
        !hasOtherModifiersThan(event, Qt::ControlModifier | Qt::ShiftModifier) &&
        event.modifiers().testFlag(Qt::ControlModifier)) {
        item->reset();
        return true;
    }
    if (hasOtherModifiersThan(event, Qt::NoModifier))
        return false;
    if (event.key() == Qt::Key_F2) {
        area_.ensureWidgetVisible(item, 0, 0);
        item->editPercent(Qt::TabFocusReason);
        return true;
    }
    if (event.isAutoRepeat())
        return event.key() == Qt::Key_Space; // when it is not part of a typed name
    if (event.key() == Qt::Key_Space && !typeAhead_.isUnderWay()) {
        item->muteView().toggle();
        return true;
    }
    if (event.key() != Qt::Key_Delete)
        return false;
    item->ignore();
    return true;
}

void ItemKeyboard::openContextMenu(MVCollectionViewItem& item) const {
    const QPoint place = item.rect().center();
    QContextMenuEvent event(QContextMenuEvent::Keyboard, place, item.mapToGlobal(place));
    QApplication::sendEvent(&item, &event);
}

bool ItemKeyboard::navigate(const QKeyEvent& event) {
    if (hasOtherModifiersThan(event, Qt::NoModifier))
        return false;
    ItemNavigation navigation;
    navigation.count = static_cast<int>(grid_.items().size());
    navigation.columns = MVCollectionView::columnsFor(grid_.width());
    navigation.rowsOfPage = std::max(1, area_.viewport()->height() / ItemLayout::height);
    navigation.direction = grid_.layoutDirection();
    const auto target = navigation.after(event.key(), currentIndex());
    if (!target)
        return false;
    focus(*target);
    return true;
}

bool ItemKeyboard::find(const QKeyEvent& event) {
    const QString text = event.text();
    if (hasOtherModifiersThan(event, Qt::ShiftModifier | Qt::GroupSwitchModifier) ||
        text.isEmpty() || !text[0].isPrint())
        return false;
    QStringList names;
    for (const auto& item : grid_.items())
        names += item->label().text();
    if (const auto index = typeAhead_.find(text, names, currentIndex()))
        focus(*index);
    return true;
}
