#pragma once

#include "tninstaller/GuardedFolder.h"

#include <string>

/// Whether other tools are kept out of the folder meanwhile, by a lock, whose file a killed tool
/// leaves there.
enum class Others { keptOut, admitted };

/// Removes `name` and all that is in it from the folder at `path`, at one stroke for whoever looks;
/// that there is none is fine. On a full disk, which may have no room for a stage, step by step.
/// Throws InstallFailure.
void removeFrom(const std::string& path, const std::string& name, GuardedFolder::Trust trust,
                Others others);
