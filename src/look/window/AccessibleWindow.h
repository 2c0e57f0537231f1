#pragma once

/// Tells assistive tools that a window with a title bar of its own is a window, and what a tool tip
/// and a bar with a problem are: from now on, for all of the process. The main thread only, with an
/// application object; further calls do nothing.
void installAccessibleWindow();
