#include "model/WindowSize.h"

#include <QStringList>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>

namespace {

constexpr double leastWidth = 400;
constexpr double leastItemWidth = 300;
constexpr double leastItems = 2;
constexpr double mostItems = 30;
constexpr double unlimited = std::numeric_limits<double>::max();

/// Invalid numbers become 0.
std::uint32_t wholePixels(double length) {
    constexpr double most = std::numeric_limits<std::uint32_t>::max();
    if (!(length > 0))
        return 0;
    return length < most ? static_cast<std::uint32_t>(length)
                         : std::numeric_limits<std::uint32_t>::max();
}

} // namespace

WindowSize::Limits WindowSize::window(const Heights& heights) {
    return {{leastWidth, leastItems * heights.item + heights.titleBar},
            {unlimited, mostItems * heights.item + heights.titleBar}};
}

WindowSize::Limits WindowSize::item(const Heights& heights) {
    return {{leastItemWidth, heights.item}, {unlimited, heights.item}};
}

QSizeF WindowSize::snapped(const QSizeF& proposed, const Heights& heights) {
    const std::uint32_t item = wholePixels(heights.item);
    if (item == 0)
        return proposed;
    const std::uint32_t rest =
        wholePixels(proposed.height() - wholePixels(heights.titleBar)) % item;
    const double added = rest >= item / 2 ? item : 0;
    return {proposed.width(), proposed.height() - rest + added};
}

QSizeF WindowSize::showingItems(int rows, const QSizeF& room, const Heights& heights) {
    const std::uint32_t item = wholePixels(heights.item);
    if (item == 0)
        return room;
    const std::uint32_t most = wholePixels(room.height() - heights.titleBar) / item;
    return {room.width(), heights.titleBar + std::min<double>(rows, most) * item};
}

QString WindowSize::frameText(const QRect& frame) {
    return QStringLiteral("%1 %2 %3 %4")
        .arg(frame.x())
        .arg(frame.y())
        .arg(frame.width())
        .arg(frame.height());
}

std::optional<QRect> WindowSize::frameFromText(const QString& text) {
    constexpr int furthest = 1 << 24; // as far as a toolkit counts
    std::array<int, 4> numbers{};
    const QStringList parts = text.split(QLatin1Char(' '));
    if (parts.size() != static_cast<qsizetype>(numbers.size()))
        return std::nullopt;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        bool isNumber = false;
        numbers[i] = parts[static_cast<qsizetype>(i)].toInt(&isNumber);
        if (!isNumber || numbers[i] > furthest || numbers[i] < -furthest)
            return std::nullopt;
    }
    const QRect frame(numbers[0], numbers[1], numbers[2], numbers[3]);
    return frame.isEmpty() ? std::nullopt : std::optional(frame);
}
