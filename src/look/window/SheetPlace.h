#pragma once

class QWidget;

/// Moves a sheet to its place on the window that it belongs to: in the middle, below the title bar
/// by a third of the free height. Where windows have no positions, the desktop decides. Main thread
/// only.
void placeOnWindow(QWidget& sheet);
