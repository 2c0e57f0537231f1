#pragma once

namespace platform {

/// Whether programs know where their windows are on the desktop, and may put them elsewhere. On
/// Wayland they do not. The main thread, with an application object.
bool canPositionWindows();

} // namespace platform
