#pragma once

#include <string>

/// The name for a program to check in with: its own, valid UTF-8, or another when its own would
/// pass for that of the notification sounds.
std::string checkinName(std::string name);
