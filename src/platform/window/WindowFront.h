#pragma once

class QString;
class QWidget;

namespace platform {

/// Shows the window, also if it is minimised, and brings it to the front as far as the desktop
/// permits. Main thread only.
void bringToFront(QWidget& window);

/// Has the next window that asks to come to the front use this activation token of the desktop's.
/// An empty one changes nothing.
void useActivationToken(const QString& token);

} // namespace platform
