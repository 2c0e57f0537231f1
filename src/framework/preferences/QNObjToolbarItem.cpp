#include "framework/preferences/QNObjToolbarItem.h"

#include "framework/preferences/QNPreferencesItemViewController.h"
#include "look/theme/CurrentTheme.h"

#include <QKeyEvent>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace {

constexpr int pictureSize = 32;
constexpr int padding = 8;
constexpr int gap = 4;
constexpr int margin = 2; // around what marks the chosen one
constexpr double radius = 6;

} // namespace

QNObjToolbarItem::QNObjToolbarItem(QString itemIdentifier, const QString& label, const QIcon& icon)
    : itemIdentifier_(std::move(itemIdentifier)) {
    setText(label);
    setIcon(icon);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QNObjToolbarItem::~QNObjToolbarItem() = default;

void QNObjToolbarItem::setRepresentedObject(
    std::shared_ptr<QNPreferencesItemViewController> object) {
    representedObject_ = std::move(object);
}

int QNObjToolbarItem::minimumItemWidth() const {
    return std::max(pictureSize, fontMetrics().horizontalAdvance(label())) + 2 * padding;
}

QSize QNObjToolbarItem::sizeHint() const {
    return {minimumItemWidth(), pictureSize + gap + fontMetrics().height() + 2 * padding};
}

bool QNObjToolbarItem::hitButton(const QPoint& place) const {
    return rect().contains(place);
}

void QNObjToolbarItem::keyPressEvent(QKeyEvent* event) {
    const bool isMirrored = layoutDirection() == Qt::RightToLeft;
    if (event->key() == Qt::Key_Right)
        Q_EMIT neighbourWanted(isMirrored ? -1 : 1);
    else if (event->key() == Qt::Key_Left)
        Q_EMIT neighbourWanted(isMirrored ? 1 : -1);
    else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        click();
    else
        QRadioButton::keyPressEvent(event);
}

void QNObjToolbarItem::paintEvent(QPaintEvent* /*event*/) {
    const MVBlackTheme& theme = CurrentTheme::theme();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor color = theme.windowTitleBarTextColor();
    const bool isOutlined = hasFocus() || (theme.isHighContrast() && isChecked());
    if (isChecked() || underMouse() || isOutlined) {
        QColor fill = color;
        fill.setAlphaF(isDown() || isChecked() ? 0.18F : underMouse() ? 0.08F : 0.0F);
        constexpr double focusWidth = 2;
        painter.setPen(isOutlined ? QPen(theme.displayNameActivityColor(), focusWidth)
                                  : QPen(Qt::NoPen));
        painter.setBrush(fill);
        painter.drawRoundedRect(QRectF(rect()).adjusted(margin, margin, -margin, -margin), radius,
                                radius);
    }
    const QRect picture((width() - pictureSize) / 2, padding, pictureSize, pictureSize);
    icon().paint(&painter, picture, Qt::AlignCenter, isEnabled() ? QIcon::Normal : QIcon::Disabled);
    painter.setPen(color);
    painter.setOpacity(isEnabled() ? 1 : 0.5);
    const QRect line = rect().adjusted(0, picture.bottom() + gap, 0, -padding);
    painter.drawText(line, Qt::AlignCenter | Qt::TextSingleLine, label());
}
