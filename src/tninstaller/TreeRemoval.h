#pragma once

#include <string>

/// Removes the file or folder `name` of the folder `parent` with all that is in it; that there is
/// none is fine. Links are removed and not followed, and another file system that is mounted within
/// is not entered. Throws InstallFailure with notRemoved; what is removed so far is gone.
void removeTree(int parent, const std::string& name);
