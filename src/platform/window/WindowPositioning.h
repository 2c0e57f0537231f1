#pragma once

namespace platform {

/// Whether programs can read and set the positions of their windows. On Wayland they cannot. Main
/// thread only, with an application object.
[[nodiscard]] bool canPositionWindows();

} // namespace platform
