#pragma once

/// Installs the accessibility of windows with their own title bar, tool tips and problem bars, for
/// the whole process. Main thread only, with an application object; further calls do nothing.
void installAccessibleWindow();
