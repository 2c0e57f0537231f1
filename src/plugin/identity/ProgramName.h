#pragma once

#include <string>

/// The name with which a program checks in: its own, valid UTF-8, or a changed one if its own could
/// be confused with that of the notification sounds.
std::string checkinName(std::string name);
