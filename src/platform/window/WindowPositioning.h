#pragma once

class QScreen;
class QWidget;

namespace platform {

/// Whether programs can read and set the positions of their windows. On Wayland they cannot. Main
/// thread only, with an application object.
[[nodiscard]] bool canPositionWindows();

/// Moves the window to the middle of the screen; does nothing where windows cannot be positioned.
void moveToCenter(QWidget& window, const QScreen& screen);

} // namespace platform
