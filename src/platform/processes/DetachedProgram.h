#pragma once

#include <QString>
#include <QStringList>

namespace platform {

/// Starts a program without arguments that keeps running when this one ends: in its own session,
/// without a terminal. Its output replaces the file at `messages`, or is discarded if that is
/// empty. Returns an empty text on success, else the reason, as text for the user. Main thread
/// only.
[[nodiscard]] QString startDetached(const QString& program, const QString& messages);

/// The same with `variables`, "NAME=value", added to its environment; its output is discarded.
[[nodiscard]] QString startDetachedWith(const QString& program, const QStringList& variables);

/// The end of a text file: its last lines, `count` at most; empty when it cannot be read. Reads
/// some kilobytes at most.
QString lastLines(const QString& file, int count);

} // namespace platform
