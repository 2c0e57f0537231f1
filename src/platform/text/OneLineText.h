#pragma once

#include <QString>

namespace platform {

/// A text from another program, such as its name, made safe for display; see shownLine(). Never
/// compare or store it.
QString oneLineText(const QString& text);

/// The direction of a text: that of its first letter with a direction; left to right if there is
/// none.
Qt::LayoutDirection textDirection(const QString& text);

/// Whether a text has no visible characters: only blanks, controls and marks, or none.
[[nodiscard]] bool isInvisible(const QString& text);

} // namespace platform
