#include "look/window/WindowPlacement.h"

#include <algorithm>

namespace {

constexpr int enough = 80; // to take hold of

bool isInReach(const QRect& titleBar, const QRect& screen) {
    const QRect seen = titleBar & screen;
    return seen.width() >= std::min(enough, titleBar.width()) &&
           2 * seen.height() >= titleBar.height();
}

} // namespace

QRect WindowPlacement::movedOnScreen(const QRect& frame, int titleBar,
                                     const QList<QRect>& screens) {
    const QRect handle(frame.topLeft(), QSize(frame.width(), titleBar));
    if (screens.isEmpty() || std::ranges::any_of(screens, [&](const QRect& screen) {
            return isInReach(handle, screen);
        }))
        return frame;
    const QRect nearest = *std::ranges::min_element(screens, {}, [&](const QRect& screen) {
        return (screen.center() - frame.center()).manhattanLength();
    });
    QRect result(frame.topLeft(), frame.size().boundedTo(nearest.size()));
    result.moveLeft(
        std::clamp(result.left(), nearest.left(), nearest.right() + 1 - result.width()));
    result.moveTop(std::clamp(result.top(), nearest.top(), nearest.bottom() + 1 - result.height()));
    return result;
}
