#pragma once

#include <QString>

namespace platform {

/// Starts a program without arguments that keeps running when this one ends: in its own session,
/// without a terminal. Its output replaces the file at `messages`, or is discarded if that is
/// empty. Returns an empty text on success, else the reason, as text for the user. Main thread
/// only.
[[nodiscard]] QString startDetached(const QString& program, const QString& messages);

/// The end of a text file: its last lines, `count` at most; empty when it cannot be read. Reads
/// some kilobytes at most.
QString lastLines(const QString& file, int count);

} // namespace platform
