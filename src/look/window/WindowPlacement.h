#pragma once

#include <QList>
#include <QRect>

/// Allowed positions of a window. Lengths are desktop pixels.
namespace WindowPlacement {

/// The unchanged frame if enough of its title bar, the top `titleBar` pixels, lies on one of
/// `screens` to grab it there, or if there are no screens; else a frame moved to the nearest
/// screen, and no larger than that.
QRect movedOnScreen(const QRect& frame, int titleBar, const QList<QRect>& screens);

} // namespace WindowPlacement
