#include "look/window/UndoNotice.h"

#include "look/theme/CurrentTheme.h"
#include "look/window/BarButton.h"
#include "platform/text/Texts.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>

#include <algorithm>
#include <chrono>

namespace {

constexpr std::chrono::seconds timeShown{10};
constexpr int margin = 8;
constexpr int usualHeight = 40;

} // namespace

UndoNotice::UndoNotice(QWidget* parent)
    : QWidget(parent), label_(new QLabel), button_(new BarButton) {
    button_->setText(Texts::tr("Undo"));
    label_->setTextFormat(Qt::PlainText);
    label_->setMinimumWidth(1);
    label_->setWordWrap(true);
    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(2 * margin, margin / 2, margin, margin / 2);
    layout->addWidget(label_, 1);
    layout->addWidget(button_);
    connect(button_, &QPushButton::clicked, this, &UndoNotice::undoWanted);
    time_.setSingleShot(true);
    time_.setInterval(timeShown);
    connect(&time_, &QTimer::timeout, this, &UndoNotice::goUnlessUsed);
    connect(&CurrentTheme::shared(), &CurrentTheme::changed, this, &UndoNotice::colorText);
    colorText();
    hide();
}

void UndoNotice::colorText() {
    QPalette palette;
    palette.setColor(QPalette::WindowText, CurrentTheme::theme().windowTitleBarTextColor());
    label_->setPalette(palette);
}

void UndoNotice::tell(const QString& text, Undo undo) {
    button_->setVisible(undo == Undo::possible);
    label_->setText(text);
    place();
    show();
    raise();
    time_.start();
    if (!QAccessible::isActive())
        return;
    QAccessibleEvent event(label_, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}

void UndoNotice::place() {
    const QRect room = parentWidget()->rect();
    const int width = room.width() - 2 * margin;
    const int height = std::max(usualHeight, layout()->heightForWidth(width));
    setGeometry(margin, room.height() - height - margin, width, height);
}

void UndoNotice::goUnlessUsed() {
    if (underMouse() || button_->hasFocus())
        time_.start();
    else
        hide();
}

void UndoNotice::paintEvent(QPaintEvent* /*event*/) {
    const MVBlackTheme& theme = CurrentTheme::theme();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(theme.isHighContrast() ? theme.windowTitleBarTextColor()
                                          : theme.windowTitleBarGradientColor2());
    painter.setBrush(theme.scrollerTrackBackgroundColor());
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 6, 6);
}
