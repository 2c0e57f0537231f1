#pragma once

#include <QList>
#include <QRect>

/// Where a window may be. Lengths are pixels of the desktop.
namespace WindowPlacement {

/// The frame itself while enough of its title bar, the top `titleBar` pixels, lies on one of
/// `screens` to take hold of it there; else one on the nearest screen, no larger than that. The
/// frame itself too when there are no screens.
QRect movedOnScreen(const QRect& frame, int titleBar, const QList<QRect>& screens);

} // namespace WindowPlacement
