#include "look/window/SheetPlace.h"

#include "look/window/MVCustomWindowTitleView.h"
#include "platform/window/WindowPositioning.h"

#include <QScreen>
#include <QWidget>

#include <algorithm>

void placeOnWindow(QWidget& sheet) {
    if (!platform::canPositionWindows() || sheet.parentWidget() == nullptr)
        return;
    const QRect under = sheet.parentWidget()->window()->geometry();
    const QRect screen = sheet.parentWidget()->screen()->availableGeometry();
    QRect place(QPoint(), sheet.size());
    place.moveCenter(under.center());
    constexpr int titleBar = MVCustomWindowTitleView::usualHeight;
    const int free = (under.height() - place.height()) / 3;
    place.moveTop(under.top() + std::max(titleBar, free));
    // A sheet that is larger than its window stays on the screen.
    place.moveLeft(
        std::max(screen.left(), std::min(place.left(), screen.right() + 1 - place.width())));
    place.moveTop(
        std::max(screen.top(), std::min(place.top(), screen.bottom() + 1 - place.height())));
    sheet.move(place.topLeft());
}
