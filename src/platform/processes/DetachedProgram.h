#pragma once

#include <QString>

namespace platform {

/// Starts a program without arguments that goes on when this one ends: in a session of its own,
/// without a terminal. What it prints replaces the file at `messages`, or is lost when that is
/// empty. Answers nothing when it runs, else the reason, for people. Main thread only.
[[nodiscard]] QString startDetached(const QString& program, const QString& messages);

/// The end of a text file: its last lines, `count` at most; empty when it cannot be read. Reads
/// some kilobytes at most.
QString lastLines(const QString& file, int count);

} // namespace platform
