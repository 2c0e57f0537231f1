#include "framework/logviewer/LogTableView.h"

#include "framework/logviewer/AccessibleLogTable.h"
#include "look/window/MVScroller.h"

#include <QEvent>
#include <QFontDatabase>
#include <QScrollBar>
#include <QStyle>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

namespace {

constexpr int margin = 6; // beside the texts
constexpr int mostBar = 1 << 30;
constexpr std::size_t mostLayouts = 1024;
constexpr std::chrono::milliseconds pauseAfterResize(50);

/// Scroll bars count in whole numbers, which may be fewer than the pixels of a long table.
int barValue(std::int64_t pixels, std::int64_t total) {
    if (total <= mostBar)
        return static_cast<int>(pixels);
    return static_cast<int>(static_cast<double>(pixels) / static_cast<double>(total) * mostBar);
}

std::int64_t pixelsOf(int value, std::int64_t total) {
    if (total <= mostBar)
        return value;
    return static_cast<std::int64_t>(static_cast<double>(value) / mostBar *
                                     static_cast<double>(total));
}

} // namespace

LogTableView::LogTableView(LogTableSource& source, QWidget* parent)
    : QAbstractScrollArea(parent)
    , source_(source)
    , heights_([this](std::size_t first, std::size_t last) { return estimate(first, last); }) {
    installAccessibleLogTable();
    setVerticalScrollBar(new MVScroller(Qt::Vertical));
    setHorizontalScrollBar(new MVScroller(Qt::Horizontal));
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    refreshing_.setSingleShot(true);
    connect(&refreshing_, &QTimer::timeout, this, &LogTableView::refreshHeights);
    takeFont();
}

void LogTableView::takeFont() {
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    setFont(font);
    const QFontMetricsF metrics(font);
    lineHeight_ = static_cast<int>(std::ceil(metrics.height()));
    characterWidth_ = metrics.horizontalAdvance(QLatin1Char('0'));
    timeWidth_ =
        static_cast<int>(std::ceil(metrics.horizontalAdvance(QStringLiteral("W 00:00:00")))) +
        2 * margin;
}

QRect LogTableView::messageArea() const {
    const QRect area = viewport()->rect().adjusted(timeWidth_, 0, 0, 0);
    return QStyle::visualRect(layoutDirection(), viewport()->rect(),
                              area.adjusted(margin, 0, -margin, 0));
}

double LogTableView::messageWidth() const {
    return std::max(messageArea().width(), 1);
}

std::int64_t LogTableView::estimate(std::size_t first, std::size_t last) const {
    const double columns = isWrapping_ ? std::max(messageWidth() / characterWidth_, 1.0) : 1e9;
    const double reciprocal = 1 / columns;
    std::int64_t lines = 0;
    for (std::size_t row = first; row < last; ++row) {
        const LogTableSource::RowSize size = source_.sizeOfRow(row);
        lines += static_cast<std::int64_t>(size.lines) +
                 static_cast<std::int64_t>(static_cast<double>(size.characters) * reciprocal);
    }
    return lines * lineHeight_ + static_cast<std::int64_t>(last - first) * 2 * Layout::padding;
}

LogTableView::Layout& LogTableView::layout(std::size_t row) const {
    auto found = layouts_.find(row);
    if (found == layouts_.end()) {
        if (layouts_.size() >= mostLayouts)
            layouts_.clear();
        found = layouts_.emplace(row, Layout(source_.entryOfRow(row))).first;
    }
    found->second.measure(font(), isWrapping_ ? messageWidth() : 0);
    return found->second;
}

int LogTableView::heightOfRow(std::size_t row) const {
    return std::max(static_cast<int>(layout(row).entry().cellHeight), 1);
}

/// Where the last row ends at the bottom.
LogTableView::Place LogTableView::placeAtEnd() const {
    std::int64_t room = viewport()->height();
    for (std::size_t row = count(); row > 0; --row) {
        const int height = heightOfRow(row - 1);
        if (height >= room)
            return {row - 1, height - room};
        room -= height;
    }
    return {0, 0};
}

void LogTableView::setTop(Place place) {
    const Place end = placeAtEnd();
    isAtEnd_ = place.row > end.row || (place.row == end.row && place.offset >= end.offset);
    top_ = isAtEnd_ ? end : place;
    updateBars();
    viewport()->update();
}

void LogTableView::scrollBy(std::int64_t pixels) {
    if (count() == 0)
        return;
    Place place = top_;
    place.offset += pixels;
    while (place.offset < 0 && place.row > 0)
        place.offset += heightOfRow(--place.row);
    place.offset = std::max<std::int64_t>(place.offset, 0);
    while (place.row + 1 < count() && place.offset >= heightOfRow(place.row))
        place.offset -= heightOfRow(place.row++);
    setTop(place);
}

void LogTableView::scrollToEnd() {
    setTop({count(), 0});
}

/// The bars follow the table, except while one is held.
void LogTableView::updateBars() {
    const std::int64_t height = viewport()->height();
    const std::int64_t total = std::max(heights_.total(), height);
    const bool fits = isAtEnd_ && top_.row == 0 && top_.offset == 0;
    QScrollBar& bar = *verticalScrollBar();
    isUpdatingBars_ = true;
    bar.setSingleStep(lineHeight_);
    bar.setPageStep(std::max(barValue(height, total), 1));
    const int maximum = fits ? 0 : std::max(barValue(total - height, total), 2);
    bar.setMaximum(maximum);
    const int value = count() > 0 ? barValue(heights_.topOf(top_.row) + top_.offset, total) : 0;
    const bool isAtStart = top_.row == 0 && top_.offset == 0;
    if (!bar.isSliderDown())
        bar.setValue(isAtEnd_ ? maximum : std::clamp(value, isAtStart ? 0 : 1, maximum - 1));
    QScrollBar& across = *horizontalScrollBar();
    across.setSingleStep(static_cast<int>(std::ceil(characterWidth_)));
    across.setPageStep(messageArea().width());
    across.setMaximum(isWrapping_ ? 0
                                  : std::max(0, static_cast<int>(std::ceil(widestText_)) -
                                                    messageArea().width()));
    isUpdatingBars_ = false;
}

/// Small ways are gone exactly, by the heights of the rows.
void LogTableView::scrollContentsBy(int dx, int dy) {
    if (isUpdatingBars_ && dx == 0)
        return; // the bar has come to where the rows are
    if (isUpdatingBars_ || count() == 0) {
        viewport()->update();
        return;
    }
    const QScrollBar& bar = *verticalScrollBar();
    const std::int64_t total = std::max<std::int64_t>(heights_.total(), viewport()->height());
    if (dy == 0)
        viewport()->update();
    else if (bar.value() == bar.maximum())
        scrollToEnd();
    else if (bar.value() == bar.minimum())
        setTop({0, 0});
    else if (std::abs(dy) <= viewport()->height() && total <= mostBar)
        scrollBy(-dy);
    else
        setTop(heights_.placeAt(pixelsOf(bar.value(), total)));
}

void LogTableView::rowsAdded() {
    if (knownRows_ > 0)
        layouts_.erase(knownRows_ - 1);
    const std::size_t rows = count();
    knownRows_ = rows;
    heights_.setCount(rows);
    if (!refreshing_.isActive())
        refreshing_.start(0);
    if (isAtEnd_)
        scrollToEnd();
    else
        updateBars();
    viewport()->update();
}

LogTableView::Sight LogTableView::sight() const {
    const QRect current = current_ != noRow ? rowRect(current_) : QRect();
    if (!current.isEmpty())
        return {current_, current.top(), isAtEnd_ && current_ + 1 == count(), current_};
    return {top_.row, -top_.offset, isAtEnd_, current_};
}

void LogTableView::rowsReplaced(const Sight& sight) {
    layouts_.clear();
    knownRows_ = count();
    heights_.reset(knownRows_);
    refreshing_.start(0);
    current_ = sight.current < knownRows_ ? sight.current : noRow;
    selectionStart_ = current_;
    top_ = {0, 0};
    if (sight.isAtEnd || sight.row >= knownRows_) {
        scrollToEnd();
    } else {
        top_ = {sight.row, 0};
        scrollBy(-sight.y);
    }
}

void LogTableView::calculateHeights() {
    const std::int64_t offset = top_.offset;
    const auto before = layouts_.find(top_.row);
    const double oldHeight = before != layouts_.end() ? before->second.entry().cellHeight : 0;
    heights_.invalidate();
    refreshing_.start(pauseAfterResize); // the new frame comes first
    if (isAtEnd_ || count() == 0) {
        scrollToEnd();
        return;
    }
    // What is read of a tall row stays in sight when it becomes more or less tall.
    const int height = heightOfRow(top_.row);
    const double part = oldHeight > 0 ? static_cast<double>(offset) / oldHeight : 0;
    setTop({top_.row, static_cast<std::int64_t>(part * height)});
}

/// A part at a time. The bars are drawn once all is done.
void LogTableView::refreshHeights() {
    if (heights_.refresh())
        refreshing_.start(0);
    else
        updateBars();
}

void LogTableView::resizeEvent(QResizeEvent* /*event*/) {
    calculateHeights();
}

void LogTableView::changeEvent(QEvent* event) {
    QAbstractScrollArea::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::LayoutDirectionChange)
        viewport()->update();
}

bool LogTableView::isSelected(std::size_t row) const noexcept {
    if (current_ == noRow)
        return false;
    const auto [first, last] = std::minmax(current_, selectionStart_);
    return row >= first && row <= last;
}

void LogTableView::setNeedle(const QString& needle) {
    needle_ = needle;
    viewport()->update();
}

void LogTableView::setWrapping(bool wraps) {
    isWrapping_ = wraps;
    widestText_ = 0;
    setHorizontalScrollBarPolicy(wraps ? Qt::ScrollBarAlwaysOff : Qt::ScrollBarAsNeeded);
    calculateHeights();
}

void LogTableView::setHint(const QString& hint) {
    if (std::exchange(hint_, hint) != hint)
        viewport()->update();
}

QRect LogTableView::rowRect(std::size_t row) const {
    if (row < top_.row || row >= count())
        return {};
    std::int64_t y = -top_.offset;
    for (std::size_t above = top_.row; above < row && y < viewport()->height(); ++above)
        y += heightOfRow(above);
    if (y >= viewport()->height())
        return {};
    return {0, static_cast<int>(y), viewport()->width(), heightOfRow(row)};
}

std::size_t LogTableView::rowAt(int y) const {
    std::int64_t bottom = -top_.offset;
    for (std::size_t row = top_.row; row < count(); ++row) {
        bottom += heightOfRow(row);
        if (y < bottom)
            return row;
    }
    return count();
}
