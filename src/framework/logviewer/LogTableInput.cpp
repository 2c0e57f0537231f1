#include "framework/logviewer/LogTableView.h"

#include <QAccessible>
#include <QKeyEvent>
#include <QScrollBar>
#include <QWheelEvent>

#include <algorithm>

// The keys and the mouse of the table.

void LogTableView::setCurrentRow(std::size_t row, bool extendsSelection) {
    if (count() == 0)
        return;
    current_ = std::min(row, count() - 1);
    if (!extendsSelection || selectionStart_ == noRow)
        selectionStart_ = current_;
    const int height = heightOfRow(current_);
    const QRect place = rowRect(current_);
    const int room = viewport()->height();
    if (current_ < top_.row || (current_ == top_.row && height <= room))
        setTop({current_, 0});
    else if (current_ > top_.row && (place.isEmpty() || place.bottom() >= room))
        showAtBottom(current_);
    viewport()->update();
    readAloud();
    Q_EMIT currentRowChanged(current_);
}

/// Far rows come into the middle, where what is around them is seen too, and tall ones are read
/// from their beginning.
void LogTableView::showAtBottom(std::size_t row) {
    const int room = viewport()->height();
    if (heightOfRow(row) >= room) {
        setTop({row, 0});
        return;
    }
    const bool isFar = rowRect(row).isEmpty() && row > top_.row + 1 && rowRect(row - 1).isEmpty();
    std::int64_t above = (isFar ? room / 2 : room) - heightOfRow(row);
    Place place{row, 0};
    while (above > 0 && place.row > 0)
        above -= heightOfRow(--place.row);
    setTop({place.row, std::max<std::int64_t>(-above, 0)});
    if (above > 0 && place.row == 0)
        setTop({0, 0});
}

void LogTableView::showMatch() {
    if (current_ == noRow || count() == 0)
        return;
    const std::int64_t match = layout(current_).topOfMatch(needle_);
    const std::int64_t room = viewport()->height();
    const std::int64_t y = rowRect(current_).top() + match;
    if (y < 0 || y + lineHeight_ > room)
        setTop({current_, std::max<std::int64_t>(match - room / 2, 0)});
}

void LogTableView::selectAll() {
    if (count() == 0)
        return;
    selectionStart_ = 0;
    current_ = count() - 1;
    viewport()->update();
}

void LogTableView::copySelection() {
    if (current_ == noRow || count() == 0)
        return;
    const auto [first, last] = std::minmax(current_, selectionStart_);
    source_.copyRows(first, std::min(last, count() - 1));
}

/// One row further, or, through a row that is not wholly in sight, three lines. A tall row is
/// entered where it is next to the row before.
void LogTableView::step(int direction, bool extendsSelection) {
    constexpr int lines = 3;
    if (current_ == noRow) {
        setCurrentRow(isAtEnd_ ? count() - 1 : top_.row);
        return;
    }
    const QRect place = rowRect(current_);
    const bool isTaller = place.height() > viewport()->height();
    const bool hasMore = direction > 0 ? place.bottom() >= viewport()->height() : place.top() < 0;
    if (isTaller && hasMore && !place.isEmpty()) {
        scrollBy(std::int64_t{direction} * lines * lineHeight_);
        return;
    }
    if (direction < 0 && current_ == 0)
        return;
    const bool isAboveTop = direction < 0 && current_ <= top_.row;
    setCurrentRow(direction > 0 ? current_ + 1 : current_ - 1, extendsSelection);
    if (isAboveTop)
        setTop({current_, std::max(heightOfRow(current_) - viewport()->height(), 0)});
}

/// Pages, by pixels, so that tall rows are seen as a whole. The current row goes along.
void LogTableView::page(int direction, bool extendsSelection) {
    scrollBy(std::int64_t{direction} * std::max(viewport()->height() - lineHeight_, lineHeight_));
    const std::size_t row = direction > 0 ? rowAt(viewport()->height() - 1) : top_.row;
    current_ = std::min(row, count() - 1);
    if (!extendsSelection || selectionStart_ == noRow)
        selectionStart_ = current_;
    viewport()->update();
    readAloud();
    Q_EMIT currentRowChanged(current_);
}

bool LogTableView::takeKey(const QKeyEvent& event) {
    const bool extends = event.modifiers().testFlag(Qt::ShiftModifier);
    switch (event.key()) {
    case Qt::Key_Up:
        step(-1, extends);
        return true;
    case Qt::Key_Down:
        step(1, extends);
        return true;
    case Qt::Key_PageUp:
        page(-1, extends);
        return true;
    case Qt::Key_PageDown:
        page(1, extends);
        return true;
    case Qt::Key_Space:
        page(extends ? -1 : 1, false);
        return true;
    case Qt::Key_Home:
        setCurrentRow(0, extends);
        setTop({0, 0});
        return true;
    case Qt::Key_End:
        setCurrentRow(count() - 1, extends);
        scrollToEnd();
        return true;
    case Qt::Key_Left:
    case Qt::Key_Right: {
        QScrollBar& bar = *horizontalScrollBar();
        bar.setValue(bar.value() + (event.key() == Qt::Key_Left ? -4 : 4) * bar.singleStep());
        return true;
    }
    default:
        return false;
    }
}

void LogTableView::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Copy))
        copySelection();
    else if (event->matches(QKeySequence::SelectAll))
        selectAll();
    else if ((event->modifiers() & (Qt::ControlModifier | Qt::AltModifier)) != 0 || count() == 0 ||
             !takeKey(*event))
        event->ignore();
}

void LogTableView::wheelEvent(QWheelEvent* event) {
    constexpr int linesOfNotch = 3;
    constexpr int notch = 120;
    if (event->angleDelta().x() != 0 && !isWrapping_)
        horizontalScrollBar()->setValue(horizontalScrollBar()->value() - event->angleDelta().x());
    const int pixels = !event->pixelDelta().isNull()
                           ? event->pixelDelta().y()
                           : event->angleDelta().y() * linesOfNotch * lineHeight_ / notch;
    scrollBy(-pixels);
    event->accept();
}

void LogTableView::mousePressEvent(QMouseEvent* event) {
    const std::size_t row = rowAt(event->position().toPoint().y());
    if (event->button() == Qt::LeftButton && row < count())
        takePress(row, event->modifiers().testFlag(Qt::ShiftModifier));
}

/// A row that is pressed stays where it is.
void LogTableView::takePress(std::size_t row, bool extendsSelection) {
    current_ = row;
    if (!extendsSelection || selectionStart_ == noRow)
        selectionStart_ = row;
    viewport()->update();
    readAloud();
    Q_EMIT currentRowChanged(row);
}

void LogTableView::mouseMoveEvent(QMouseEvent* event) {
    if (!event->buttons().testFlag(Qt::LeftButton) || current_ == noRow)
        return;
    const int y = event->position().toPoint().y();
    if (y < 0)
        scrollBy(-lineHeight_);
    else if (y >= viewport()->height())
        scrollBy(lineHeight_);
    const std::size_t row = rowAt(std::clamp(y, 0, viewport()->height() - 1));
    takePress(std::min(row, count() - 1), true);
}

/// Whoever comes by the keyboard needs a row to begin with.
void LogTableView::focusInEvent(QFocusEvent* event) {
    QAbstractScrollArea::focusInEvent(event);
    viewport()->update();
    const bool isByKey =
        event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
    if (isByKey && current_ == noRow && count() > 0)
        takePress(isAtEnd_ ? count() - 1 : top_.row, false);
    readAloud();
}

void LogTableView::focusOutEvent(QFocusEvent* event) {
    QAbstractScrollArea::focusOutEvent(event);
    viewport()->update();
}

/// The current row has the focus of assistive tools.
void LogTableView::readAloud() {
    if (!hasFocus() || current_ == noRow || !QAccessible::isActive())
        return;
    QAccessibleEvent event(this, QAccessible::Focus);
    event.setChild(static_cast<int>(current_));
    QAccessible::updateAccessibility(&event);
}
