#include "look/window/QNToolTip.h"

#include "look/theme/CurrentTheme.h"
#include "look/window/AccessibleWindow.h"
#include "platform/window/WindowPositioning.h"

#include <QAbstractTextDocumentLayout>
#include <QApplication>
#include <QPainter>
#include <QScreen>
#include <QtMath>

#include <algorithm>
#include <chrono>

namespace {

constexpr int mostWidth = 420;
constexpr int margin = 6;
constexpr QPoint besideMouse(4, 20);
constexpr std::chrono::milliseconds leastTime{10000};
constexpr std::chrono::milliseconds timePerLetter{40};

} // namespace

QNToolTip& QNToolTip::shared() {
    static QPointer<QNToolTip> tip;
    if (tip == nullptr)
        tip = new QNToolTip;
    return *tip;
}

QNToolTip::QNToolTip()
    : QWidget(nullptr, Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowTransparentForInput) {
    installAccessibleWindow();
    setAttribute(Qt::WA_ShowWithoutActivating);
    document_.setDocumentMargin(margin);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    document_.setDefaultTextOption(option);
    time_.setSingleShot(true);
    connect(&time_, &QTimer::timeout, this, &QWidget::hide);
    connect(&CurrentTheme::shared(), &CurrentTheme::changed, this, [this] { update(); });
}

void QNToolTip::setText(const QString& text) {
    if (text == this->text())
        return;
    document_.setPlainText(text);
    setAccessibleName(text);
    if (isVisible())
        fitText();
}

void QNToolTip::fitText() {
    document_.setDefaultFont(font());
    document_.setTextWidth(mostWidth);
    document_.setTextWidth(std::min<qreal>(mostWidth, document_.idealWidth()));
    setFixedSize(qCeil(document_.size().width()), qCeil(document_.size().height()));
    time_.start(leastTime + timePerLetter * text().size());
    update();
}

void QNToolTip::showAt(const QPoint& place, QWidget& owner) {
    if (document_.isEmpty()) {
        hide();
        return;
    }
    // Without a window that it belongs to, Wayland would not show it.
    if (QWidget* const window = owner.window(); parentWidget() != window)
        setParent(window, windowFlags());
    owner_ = &owner;
    disconnect(endOfOwner_);
    endOfOwner_ = connect(&owner, &QObject::destroyed, this, &QWidget::hide);
    qApp->installEventFilter(this);
    fitText();
    // Where windows have no places it may be counted from where none is; there the window system
    // keeps tips on the screen.
    setGeometry(platform::canPositionWindows() ? placeFor(place, owner.screen()->geometry())
                                               : QRect(place + besideMouse, size()));
    show();
    raise();
}

/// Below the mouse, else above it.
QRect QNToolTip::placeFor(const QPoint& mouse, const QRect& screen) const {
    QRect place(mouse + besideMouse, size());
    if (place.bottom() > screen.bottom())
        place.moveBottom(mouse.y() - besideMouse.x());
    place.moveLeft(std::max(screen.left(), std::min(place.left(), screen.right() - width())));
    place.moveTop(std::max(screen.top(), place.top()));
    return place;
}

bool QNToolTip::isOfOwner(const QObject* object) const {
    const auto* const widget = qobject_cast<const QWidget*>(object);
    return widget != nullptr && owner_ != nullptr &&
           (widget == owner_ || owner_->isAncestorOf(widget));
}

bool QNToolTip::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::Wheel:
    case QEvent::KeyPress:
    case QEvent::WindowDeactivate:
        hide();
        break;
    case QEvent::MouseMove:
        if (watched->isWidgetType() && !isOfOwner(watched))
            hide();
        break;
    case QEvent::Leave:
    case QEvent::Hide:
        if (watched == owner_)
            hide();
        break;
    default:
        break;
    }
    return false;
}

void QNToolTip::hideEvent(QHideEvent* /*event*/) {
    qApp->removeEventFilter(this);
    owner_ = nullptr;
    time_.stop();
}

void QNToolTip::paintEvent(QPaintEvent* /*event*/) {
    const MVBlackTheme& theme = CurrentTheme::theme();
    QPainter painter(this);
    painter.fillRect(rect(), theme.isHighContrast() ? theme.windowTitleBarTextColor()
                                                    : theme.windowTitleBarGradientColor2());
    painter.fillRect(rect().adjusted(1, 1, -1, -1), theme.scrollerTrackBackgroundColor());
    QAbstractTextDocumentLayout::PaintContext context;
    context.palette.setColor(QPalette::Text, theme.windowTitleBarTextColor());
    document_.documentLayout()->draw(&painter, context);
}
