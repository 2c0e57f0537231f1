#pragma once

#include <QColor>

/// `color` mixed with white: 0 leaves it as it is, 1 makes it white, amounts beyond count as the
/// nearest of these. The alpha stays. Any thread.
QColor lighterBy(const QColor& color, double amount);

/// Opaque unless said otherwise; components are fractions of 1, in sRGB.
QColor whiteColor(double white, double alpha = 1.0);
QColor rgbColor(double red, double green, double blue, double alpha = 1.0);
