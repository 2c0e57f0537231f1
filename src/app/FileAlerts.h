#pragma once

#include <QString>

#include <functional>

/// Reports errors with the program's own files, the preferences and the log: each kind of error
/// once in an alert, and all of them in the log. Errors that happen before there is a log or a
/// window are reported as soon as there is one.
///
/// Order of calls: listen(), before the preferences are read; logIsOpen(), even if the log could
/// not be opened; showWith(). Main thread only.
namespace FileAlerts {

using Show = std::function<void(const QString& title, const QString& message)>;

/// Receives errors with the preferences from now on.
void listen();

void logIsOpen();

/// The log could not be opened; `path` is its path, empty if there is no folder for it.
void logIsMissing(const QString& path);

/// Shows current and later errors with `show`; null: keeps them for later.
void showWith(Show show);

} // namespace FileAlerts
