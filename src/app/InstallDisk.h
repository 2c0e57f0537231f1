#pragma once

#include <QString>

/// The application on the disk image that it was delivered on, and just after it has been copied
/// from there. Main thread only.
namespace InstallDisk {

/// On an install disk, ends what runs of the application and its helper, since the copy takes their
/// place; they save first. Else nothing. Waits for some seconds at most.
void endRunningCopies();

/// On an install disk, copies the application to the computer and ends the program; see
/// QNAppInstaller.
void relocate();

/// In a copy that has just been made: disposes of the disk, and makes the copy known to the
/// desktop. Returns the sentence that tells the user where it is; else an empty text.
[[nodiscard]] QString finish();

} // namespace InstallDisk
