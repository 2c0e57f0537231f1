#pragma once

class QMenu;

/// Gives the menu, and the menus in it, the look of our windows whenever it opens. With high
/// contrast that is the desktop's. Main thread only.
void followTheme(QMenu& menu);
