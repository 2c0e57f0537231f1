#include "look/theme/LighterColor.h"

#include <algorithm>

QColor lighterBy(const QColor& color, double amount) {
    const double share = std::clamp(amount, 0.0, 1.0);
    const auto mixed = [share](float component) {
        return static_cast<double>(component) * (1 - share) + share;
    };
    return rgbColor(mixed(color.redF()), mixed(color.greenF()), mixed(color.blueF()),
                    static_cast<double>(color.alphaF()));
}

QColor whiteColor(double white, double alpha) {
    return rgbColor(white, white, white, alpha);
}

QColor rgbColor(double red, double green, double blue, double alpha) {
    return QColor::fromRgbF(static_cast<float>(red), static_cast<float>(green),
                            static_cast<float>(blue), static_cast<float>(alpha));
}
