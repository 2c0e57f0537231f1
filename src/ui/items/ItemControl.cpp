#include "ui/items/ItemControl.h"

#include "look/theme/CurrentTheme.h"

#include <QFocusEvent>

#include <utility>

void ItemControl::focusInEvent(QFocusEvent* event) {
    showKeyFocus(event->reason() != Qt::MouseFocusReason);
}

void ItemControl::focusOutEvent(QFocusEvent* /*event*/) {
    showKeyFocus(false);
}

void ItemControl::showKeyFocus(bool hasKeyFocus) {
    if (std::exchange(hasKeyFocus_, hasKeyFocus) != hasKeyFocus)
        update();
}

QPen ItemControl::focusPen() {
    constexpr double width = 2;
    return {CurrentTheme::theme().displayNameActivityColor(), width};
}
