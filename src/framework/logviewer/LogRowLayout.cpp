#include "framework/logviewer/LogRowLayout.h"

#include "framework/logviewer/LogFinder.h"

#include <QPainter>
#include <QTextOption>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace QN::logviewer {

namespace {

constexpr QRgb matchColor = qRgb(255, 176, 0);
constexpr int tabColumns = 8;

} // namespace

QString shownMessage(QString message) {
    constexpr char16_t controlPictures = 0x2400;
    constexpr char16_t deletePicture = 0x2421;
    for (QChar& each : message) {
        if (each == QLatin1Char('\n'))
            each = QChar::LineSeparator;
        else if (each.unicode() < 0x20 && each != QLatin1Char('\t'))
            each = QChar(static_cast<char16_t>(controlPictures + each.unicode()));
        else if (each.unicode() == 0x7F)
            each = QChar(deletePicture);
    }
    return message;
}

LogRowLayout::LogRowLayout(QNLogEntry entry) : entry_(std::move(entry)) {}

bool LogRowLayout::measure(const QFont& font, double columnWidth) {
    if (layout_ && entry_.columnWidth == columnWidth)
        return false;
    if (!layout_)
        layout_ = std::make_unique<QTextLayout>(shownMessage(entry_.message()), font);
    const bool wraps = columnWidth > 0;
    QTextOption option;
    option.setWrapMode(wraps ? QTextOption::WrapAtWordBoundaryOrAnywhere : QTextOption::ManualWrap);
    option.setTabStopDistance(QFontMetricsF(font).horizontalAdvance(QLatin1Char(' ')) * tabColumns);
    layout_->setTextOption(option);
    layout_->setCacheEnabled(true);
    layout_->beginLayout();
    double height = 0;
    textWidth_ = 0;
    for (QTextLine line = layout_->createLine(); line.isValid(); line = layout_->createLine()) {
        line.setLineWidth(wraps ? columnWidth : std::numeric_limits<short>::max() * 16.0);
        line.setPosition({0, height});
        height += std::ceil(line.height());
        textWidth_ = std::max(textWidth_, line.naturalTextWidth());
    }
    layout_->endLayout();
    entry_.columnWidth = columnWidth;
    return std::exchange(entry_.cellHeight, height + 2 * padding) != entry_.cellHeight;
}

int LogRowLayout::topOfMatch(const QString& needle) const {
    const auto matches = matchesIn(layout_->text(), needle);
    if (matches.empty())
        return 0;
    return static_cast<int>(layout_->lineForTextPosition(matches.front().start).y()) + padding;
}

void LogRowLayout::draw(QPainter& painter, const QPointF& place, const QRectF& clip,
                        const QString& needle) const {
    QList<QTextLayout::FormatRange> marks;
    for (const LogMatch& match : matchesIn(layout_->text(), needle)) {
        QTextCharFormat format;
        format.setBackground(QColor(matchColor));
        format.setForeground(Qt::black);
        marks.push_back({match.start, match.length, format});
    }
    layout_->draw(&painter, place, marks, clip);
}

} // namespace QN::logviewer
