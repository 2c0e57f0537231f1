#pragma once

class AppVolumeController;

/// What must be on the disk before the program ends. Neither call takes more than 3 s, whatever a
/// disk does. Main thread only.
namespace FinalSave {

/// The settings. `controller` may be null.
void save(AppVolumeController* controller);

/// The settings and the window's frame; then the plug-ins' sockets are closed, and their files
/// removed, if `isServing` says that there are any. When a disk hangs, no other file is touched,
/// for that might never end: the kernel closes the sockets too, and the next start replaces their
/// files.
void saveAndDisconnect(AppVolumeController* controller, bool isServing);

} // namespace FinalSave
