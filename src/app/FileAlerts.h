#pragma once

#include <QString>

#include <functional>

/// Tells the person what is wrong with the program's own files, the preferences and the log: each
/// kind of trouble once, in an alert, and all of it in the log. What happens before there is a log,
/// or a window, is told as soon as there is one.
///
/// In this order: listen(), before the preferences are read; logIsOpen(), also when it could not be
/// opened; showWith(). Main thread only.
namespace FileAlerts {

using Show = std::function<void(const QString& title, const QString& message)>;

/// Hears of the preferences' trouble from now on.
void listen();

void logIsOpen();

/// There is no log; `path` is where it should be, empty when there is no folder for it.
void logIsMissing(const QString& path);

/// Shows by `show` what there is to tell, now and later; null: keeps it.
void showWith(Show show);

} // namespace FileAlerts
