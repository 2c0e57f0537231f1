#pragma once

#include <string>

/// Removes the file or folder `name` of the folder `parent` with all that is in it; that there is
/// none is fine. Links are removed and not followed, and another file system that is mounted within
/// is not entered. Root, whose `parent` only root may write, empties no folder that another user
/// can have moved into the tree without being able to empty it. Throws InstallFailure with
/// notRemoved; what is removed so far is gone.
void removeTree(int parent, const std::string& name);
