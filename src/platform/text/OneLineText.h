#pragma once

#include <QString>

namespace platform {

/// What is shown of a text that a stranger chose, such as a program's name: see
/// shownLine(). For the eye only: never compare or store it.
QString oneLineText(const QString& text);

/// Which way a text runs: that of its first letter which has one, whatever stands around it; from
/// left to right without such a letter.
Qt::LayoutDirection textDirection(const QString& text);

/// Whether nothing of a text would be seen: blanks, controls and marks, or nothing at all.
bool isInvisible(const QString& text);

} // namespace platform
