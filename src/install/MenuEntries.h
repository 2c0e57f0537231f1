#pragma once

#include <filesystem>

/// Makes the application known to the desktop at the place of `bundle`: its menu entry, its icons,
/// and its service on the session bus. For all users (/usr/local/share) if it lies in their
/// Applications folder and this user may write there, else for this user. What fails is logged.
/// Main thread only.
void writeMenuEntries(const std::filesystem::path& bundle);

/// Removes them from this user's own folders and, if they are those of `bundle`, from those of all
/// users; what a package has put there stays. Files that cannot be removed are logged. Main thread
/// only.
void removeMenuEntries(const std::filesystem::path& bundle);
