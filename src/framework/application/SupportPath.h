#pragma once

#include <QString>

/// The folder for the program's own data, of this user or shared by all: `leaf` in the application
/// support folder, created if missing. Empty if the system has no such folder. If it is not
/// accessible or belongs to another user, this is only logged. Any thread.
QString makeSupportPath(const QString& leaf, bool shared);
