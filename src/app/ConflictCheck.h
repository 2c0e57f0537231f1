#pragma once

#include <QString>

/// Another audio plug-in, with which this program cannot work. Main thread only.
namespace ConflictCheck {

/// Whether it is in the local library of that path.
[[nodiscard]] bool isConflicting(const QString& localLibrary);

/// Says in an alert that it has to go. Returns when the user has read that.
void tell();

} // namespace ConflictCheck
