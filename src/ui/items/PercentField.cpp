#include "ui/items/PercentField.h"

#include "look/theme/CurrentTheme.h"
#include "look/theme/ThemePalette.h"
#include "look/window/QNToolTip.h"
#include "platform/text/Texts.h"

#include <QAccessible>
#include <QKeyEvent>
#include <QPainter>

#include <utility>

namespace {

constexpr int usualHeight = 24;
constexpr int mostLetters = 20;

} // namespace

PercentField::PercentField(int percent, QWidget* parent)
    : QLineEdit(QString::number(percent), parent) {
    setFrame(false);
    setTextMargins(5, 0, 5, 0);
    setMaxLength(mostLetters);
    setAlignment(Qt::AlignRight);
    setPalette(themePalette());
    setAccessibleName(Texts::tr("Volume"));
    selectAll();
}

QSize PercentField::sizeHint() const {
    constexpr int letters = 8;
    return {letters * fontMetrics().averageCharWidth() + 16, usualHeight};
}

void PercentField::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Escape:
        leave();
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        enter();
        break;
    default:
        QLineEdit::keyPressEvent(event);
    }
}

void PercentField::enter() {
    if (const auto volume = TypedVolume::parse(text())) {
        if (!std::exchange(isDone_, true))
            Q_EMIT entered(*volume);
        return;
    }
    selectAll();
    const QString help = Texts::tr("Type 0 to 100, a step such as +5, or “mute”.");
    QNToolTip::shared().setText(help);
    QNToolTip::shared().showAt(mapToGlobal(rect().bottomLeft()), *this);
    setAccessibleDescription(help);
    if (!QAccessible::isActive())
        return;
    QAccessibleEvent alert(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

void PercentField::leave() {
    if (!std::exchange(isDone_, true))
        Q_EMIT left();
}

/// Not while its menu is open, or another window is in front.
void PercentField::focusOutEvent(QFocusEvent* event) {
    QLineEdit::focusOutEvent(event);
    if (event->reason() != Qt::PopupFocusReason && event->reason() != Qt::ActiveWindowFocusReason)
        leave();
}

void PercentField::paintEvent(QPaintEvent* event) {
    QLineEdit::paintEvent(event);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(CurrentTheme::theme().displayNameActivityColor(), 1));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 3, 3);
}
