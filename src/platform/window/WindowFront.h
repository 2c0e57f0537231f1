#pragma once

class QWidget;

namespace platform {

/// Shows the window, also if it is minimised, and brings it to the front as far as the desktop
/// permits. Main thread only.
void bringToFront(QWidget& window);

} // namespace platform
