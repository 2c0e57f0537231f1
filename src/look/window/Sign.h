#pragma once

class QColor;
class QPainter;

/// Signs beside messages: an i in a circle, an exclamation mark in a triangle, a cross in a circle.
enum class Sign { information, warning, critical };

/// The edge of their square, in pixels.
inline constexpr int signSize = 24;

/// Draws one at the origin, in the current theme's colours. `background` is what it stands on.
void drawSign(QPainter& painter, Sign sign, const QColor& background);
