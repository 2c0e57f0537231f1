#include "look/window/BarButton.h"

#include "look/theme/CurrentTheme.h"
#include "look/window/QNToolTip.h"
#include "platform/text/OneLineText.h"

#include <QHelpEvent>
#include <QPainter>
#include <QRegularExpression>

#include <algorithm>

namespace {

constexpr int padding = 12;
constexpr int usualHeight = 32;
constexpr int leastWidth = 64;
constexpr int textFlags = Qt::TextSingleLine | Qt::TextShowMnemonic;

QString withoutMnemonic(QString text) {
    static const QRegularExpression mark(QStringLiteral("&(.)"));
    return text.replace(mark, QStringLiteral("\\1"));
}

} // namespace

BarButton::BarButton(QWidget* parent) : QPushButton(parent) {
    setAutoDefault(true); // so that Return presses it too
    setAttribute(Qt::WA_Hover);
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    setSizePolicy(policy);
}

QSize BarButton::sizeHint() const {
    return {fontMetrics().size(textFlags, text()).width() + 2 * padding,
            std::max(usualHeight, fontMetrics().height())};
}

QSize BarButton::minimumSizeHint() const {
    return QSize(leastWidth, usualHeight).boundedTo(sizeHint());
}

bool BarButton::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip)
        return QPushButton::event(event);
    QNToolTip::shared().setText(withoutMnemonic(text()));
    QNToolTip::shared().showAt(static_cast<const QHelpEvent*>(event)->globalPos(), *this);
    return true;
}

void BarButton::paintEvent(QPaintEvent* /*event*/) {
    const MVBlackTheme& theme = CurrentTheme::theme();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool isOutlined = theme.isHighContrast() || hasFocus();
    constexpr double focusWidth = 2;
    const double width = hasFocus() ? focusWidth : 1;
    painter.setPen(isOutlined ? QPen(theme.displayNameActivityColor(), width) : QPen(Qt::NoPen));
    painter.setBrush(theme.windowTitleBarGradientColor2());
    painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 6, 6);
    QColor color = theme.windowTitleBarTextColor();
    if (isDown() || underMouse()) {
        color.setAlphaF(isDown() ? 0.3F : 0.18F);
        painter.setPen(Qt::NoPen);
        painter.setBrush(color);
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 6, 6);
    }
    painter.setOpacity(isEnabled() ? 1 : 0.4);
    painter.setPen(theme.windowTitleBarTextColor());
    painter.setLayoutDirection(platform::textDirection(text()));
    const QRect room = rect().adjusted(padding / 2, 0, -padding / 2, 0);
    painter.drawText(room, Qt::AlignCenter | textFlags,
                     fontMetrics().elidedText(text(), Qt::ElideRight, room.width(), textFlags));
}
