#include "framework/logviewer/LogTableView.h"

#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyle>

#include <algorithm>

// How the table looks. The colours of rows are light, so their text is black in every theme; rows
// without one have those of the desktop.

namespace {

constexpr int stripeWidth = 4; // of a selected row, in the colour of its level

struct RowColors {
    QColor background;
    QColor text;
};

RowColors colorsOf(const std::optional<QColor>& level, bool isSelected, const QPalette& palette) {
    if (isSelected)
        return {palette.color(QPalette::Highlight), palette.color(QPalette::HighlightedText)};
    if (level)
        return {*level, Qt::black};
    return {palette.color(QPalette::Base), palette.color(QPalette::Text)};
}

/// For those who cannot tell levels by their colours.
QString letterOf(std::uint32_t level) {
    return level <= 2 ? QString(QLatin1Char("CEW"[level])) + QLatin1Char(' ') : QString();
}

} // namespace

void LogTableView::paintEvent(QPaintEvent* event) {
    QPainter painter(viewport());
    painter.setFont(font());
    std::int64_t y = -top_.offset;
    const QRect all = viewport()->rect();
    double widest = widestText_;
    for (std::size_t row = top_.row; row < count() && y < all.height(); ++row) {
        const QRect area(0, static_cast<int>(y), all.width(), heightOfRow(row));
        if (area.intersects(event->rect()))
            paintRow(painter, row, area);
        widest = std::max(widest, layout(row).textWidth());
        y += area.height();
    }
    const QRect rest(0, static_cast<int>(y), all.width(), all.height() - static_cast<int>(y));
    if (y < all.height())
        painter.fillRect(rest, palette().base());
    if (count() == 0 && !hint_.isEmpty()) {
        painter.setFont(QFont());
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(all.adjusted(lineHeight_, 0, -lineHeight_, 0),
                         Qt::AlignCenter | Qt::TextWordWrap, hint_);
    }
    if (widest > widestText_ && !isWrapping_) {
        widestText_ = widest;
        QMetaObject::invokeMethod(this, &LogTableView::updateBars, Qt::QueuedConnection);
    }
}

void LogTableView::paintRow(QPainter& painter, std::size_t row, const QRect& area) {
    const std::optional<QColor> level = source_.backgroundColorForRow(row);
    const bool selected = isSelected(row);
    const RowColors colors = colorsOf(level, selected, palette());
    painter.fillRect(area, colors.background);
    painter.setPen(colors.text);
    const Layout& shown = layout(row);
    if (selected && level) {
        const QRect stripe(area.left(), area.top(), stripeWidth, area.height());
        painter.fillRect(QStyle::visualRect(layoutDirection(), area, stripe), *level);
    }
    const QRect message = messageArea();
    const QRect clip(message.left(), area.top(), message.width(), area.height());
    const double across = isWrapping_ ? 0 : horizontalScrollBar()->value();
    painter.save();
    painter.setClipRect(clip);
    shown.draw(painter, QPointF(message.left() - across, area.top() + Layout::padding), clip,
               needle_);
    painter.restore();
    paintTime(painter, shown.entry(), area);
    if (row == current_ && hasFocus()) {
        painter.setPen(QPen(colors.text, 1, Qt::DotLine));
        painter.drawRect(area.adjusted(0, 0, -1, -1));
    }
}

/// The time stays in sight beside a row that begins above the window.
void LogTableView::paintTime(QPainter& painter, const QNLogEntry& entry, const QRect& area) {
    const int top = std::clamp(0, area.top(), std::max(area.top(), area.bottom() - lineHeight_));
    const int left = timeWidth_ - static_cast<int>(characterWidth_ * 8) - 6;
    QRect place(left, std::max(area.top(), top) + Layout::padding, timeWidth_ - left, lineHeight_);
    const QString time = entry.date().time().toString(QStringLiteral("HH:mm:ss"));
    painter.drawText(QStyle::visualRect(layoutDirection(), viewport()->rect(), place),
                     Qt::AlignLeft | Qt::AlignAbsolute | Qt::TextSingleLine, time);
    const QString letter = letterOf(entry.level());
    place.setLeft(left - static_cast<int>(characterWidth_ * 2));
    place.setWidth(static_cast<int>(characterWidth_ * 2));
    painter.drawText(QStyle::visualRect(layoutDirection(), viewport()->rect(), place),
                     Qt::AlignLeft | Qt::AlignAbsolute | Qt::TextSingleLine, letter);
}
