#pragma once

#include <QColor>

/// `color` mixed with white: 0 is unchanged, 1 is white; other amounts are clamped. The alpha
/// stays. Any thread.
QColor lighterBy(const QColor& color, double amount);

/// Components are fractions of 1, in sRGB.
QColor whiteColor(double white, double alpha = 1.0);
QColor rgbColor(double red, double green, double blue, double alpha = 1.0);
