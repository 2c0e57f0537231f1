#include "framework/preferences/WindowPosition.h"

#include <QRegularExpression>

#include <algorithm>
#include <cmath>

namespace WindowPosition {

QString text(const QRect& frame, const QRect& screen) {
    return QStringLiteral("{%1, %2}").arg(frame.left()).arg(frame.top() - screen.top());
}

std::optional<QPoint> parsed(const QString& text) {
    static const QRegularExpression point(
        QStringLiteral(R"(\A\{(-?[0-9]{1,6}(?:\.[0-9]+)?), (-?[0-9]{1,6}(?:\.[0-9]+)?)\}\z)"));
    constexpr double farthest = 100'000;
    const auto match = point.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    const double x = match.capturedView(1).toDouble();
    const double y = match.capturedView(2).toDouble();
    if (std::abs(x) > farthest || std::abs(y) > farthest)
        return std::nullopt;
    return QPoint(static_cast<int>(std::lround(x)), static_cast<int>(std::lround(y)));
}

QPoint topLeft(const QPoint& stored, const QList<QRect>& screens) {
    const auto found = std::ranges::find_if(screens, [&](const QRect& screen) {
        return screen.left() <= stored.x() && stored.x() <= screen.right();
    });
    const QRect& screen = found != screens.end() ? *found : screens.first();
    return {stored.x(), screen.top() + stored.y()};
}

} // namespace WindowPosition
