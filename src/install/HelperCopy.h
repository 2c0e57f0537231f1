#pragma once

#include <QString>

/// Copies the bundle at `source` to `destination`, where nothing is yet, with the files' rights.
/// The copy takes its place when it is complete and on the disk; what is left beside it of copies
/// that were killed is removed. Returns an empty text on success, else the reason.
/// Any thread.
[[nodiscard]] QString copyHelper(const QString& source, const QString& destination);
