#pragma once

#include <QString>

/// The folder for the program's own data, of this user or shared by all: `leaf` in the application
/// support folder, which is made if need be. Empty when the system names no such folder. That it is
/// not accessible, not ours or not permitted to us is logged, and changes nothing else. Any thread.
QString makeSupportPath(const QString& leaf, bool shared);
