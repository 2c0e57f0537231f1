#pragma once

#include <QString>

/// A text that a stranger chose, such as a program's name, as it is shown in one line: control
/// characters and separators of lines are blanks, and what would turn the direction of the text
/// beside it (embeddings, overrides, isolates) is left out. Marks that belong to right-to-left
/// writing stay. For the eye only: never compare or store it.
QString oneLineText(const QString& text);

/// Which way a text runs: that of its first letter which has one, whatever stands around it; from
/// left to right without such a letter.
Qt::LayoutDirection directionOf(const QString& text);

/// Whether nothing of a text would be seen: blanks, controls and marks, or nothing at all.
bool isInvisible(const QString& text);
