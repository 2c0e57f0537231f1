#include "ui/items/ItemControl.h"

#include "look/theme/CurrentTheme.h"

#include <QFocusEvent>

#include <utility>

/// With the window, or from a menu, the focus comes back as it was.
void ItemControl::focusInEvent(QFocusEvent* event) {
    const bool isBack =
        event->reason() == Qt::ActiveWindowFocusReason || event->reason() == Qt::PopupFocusReason;
    showKeyFocus(isBack ? hadKeyFocus_ : event->reason() != Qt::MouseFocusReason);
}

void ItemControl::focusOutEvent(QFocusEvent* /*event*/) {
    hadKeyFocus_ = hasKeyFocus_;
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
