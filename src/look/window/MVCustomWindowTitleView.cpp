#include "look/window/MVCustomWindowTitleView.h"

#include "look/theme/CurrentTheme.h"
#include "look/window/MVCustomWindowWidgetsView.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>

#include <utility>

namespace {

constexpr int margin = 4;

} // namespace

MVCustomWindowTitleView::MVCustomWindowTitleView(QWidget* parent)
    : QWidget(parent)
    , start_(new MVCustomWindowWidgetsView(this))
    , end_(new MVCustomWindowWidgetsView(this)) {
    QFont bold = font();
    bold.setWeight(QFont::DemiBold);
    setFont(bold);
    for (const auto* const widgets : {start_, end_})
        connect(widgets, &MVCustomWindowWidgetsView::pressed, this,
                &MVCustomWindowTitleView::buttonPressed);
}

void MVCustomWindowTitleView::setTitleBar(const platform::TitleBarSettings& titleBar) {
    titleBar_ = titleBar;
    start_->setButtons(titleBar.left);
    end_->setButtons(titleBar.right);
    resizeEvent(nullptr);
    update();
}

WindowButton* MVCustomWindowTitleView::button(platform::TitleBarSettings::Button kind) const {
    WindowButton* const atStart = start_->button(kind);
    return atStart != nullptr ? atStart : end_->button(kind);
}

void MVCustomWindowTitleView::resizeEvent(QResizeEvent* /*event*/) {
    const QRect room = rect().adjusted(margin, 0, -margin, 0);
    const auto place = [&](QWidget* part, Qt::Alignment side) {
        part->setGeometry(QStyle::alignedRect(layoutDirection(), side | Qt::AlignVCenter,
                                              {part->sizeHint().width(), height()}, room));
    };
    place(start_, Qt::AlignLeft);
    place(end_, Qt::AlignRight);
}

/// In the middle of the whole bar as far as the buttons leave room there.
QRect MVCustomWindowTitleView::roomForTitle() const {
    const int side = std::max(start_->width(), end_->width()) + 3 * margin;
    return rect().adjusted(side, 0, -side, 0);
}

void MVCustomWindowTitleView::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    QColor color = CurrentTheme::theme().windowTitleBarTextColor();
    color.setAlphaF(isActiveWindow() ? 1.0F : 0.6F);
    painter.setPen(color);
    const QRect room = roomForTitle();
    const QString title =
        namesProgram_ ? QCoreApplication::applicationName() : window()->windowTitle();
    painter.drawText(room, Qt::AlignCenter | Qt::TextSingleLine,
                     fontMetrics().elidedText(title, Qt::ElideRight, room.width()));
}

void MVCustomWindowTitleView::mousePressEvent(QMouseEvent* event) {
    using Action = platform::TitleBarSettings::Action;
    isHeld_ = event->button() == Qt::LeftButton;
    pressed_ = event->position().toPoint();
    const Action action = event->button() == Qt::MiddleButton  ? titleBar_.middleClick
                          : event->button() == Qt::RightButton ? titleBar_.secondaryClick
                                                               : Action::none;
    if (action != Action::none)
        Q_EMIT acted(action);
}

/// A window that is moved at once could not be clicked twice.
void MVCustomWindowTitleView::mouseMoveEvent(QMouseEvent* event) {
    const QPoint way = event->position().toPoint() - pressed_;
    if (isHeld_ && way.manhattanLength() >= QApplication::startDragDistance()) {
        isHeld_ = false;
        Q_EMIT dragged();
    }
}

void MVCustomWindowTitleView::mouseReleaseEvent(QMouseEvent* /*event*/) {
    isHeld_ = false;
}

void MVCustomWindowTitleView::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        Q_EMIT acted(titleBar_.doubleClick);
}

bool MVCustomWindowTitleView::event(QEvent* event) {
    if (event->type() == QEvent::LayoutDirectionChange)
        setTitleBar(titleBar_);
    return QWidget::event(event);
}
