#include "look/window/BarText.h"

#include "look/theme/CurrentTheme.h"
#include "look/window/QNToolTip.h"
#include "platform/text/OneLineText.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QTextLayout>

#include <algorithm>

void BarText::setText(const QString& text) {
    text_ = text;
    setAccessibleName(text);
    update();
}

QSize BarText::minimumSizeHint() const {
    constexpr int letters = 12;
    return {letters * fontMetrics().averageCharWidth(), fontMetrics().lineSpacing()};
}

QStringList BarText::lines() const {
    const qsizetype most = std::max(1, height() / fontMetrics().lineSpacing());
    QStringList lines;
    QTextLayout layout(text_, font());
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid() && lines.size() < most;
         line = layout.createLine()) {
        line.setLineWidth(width());
        const bool isLast = lines.size() + 1 == most;
        const QString rest = text_.mid(line.textStart());
        lines += isLast ? fontMetrics().elidedText(rest, Qt::ElideRight, width())
                        : rest.left(line.textLength()).trimmed();
    }
    layout.endLayout();
    return lines;
}

bool BarText::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip)
        return QWidget::event(event);
    QNToolTip::shared().setText(text_);
    QNToolTip::shared().showAt(static_cast<const QHelpEvent*>(event)->globalPos(), *this);
    return true;
}

void BarText::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setPen(CurrentTheme::theme().windowTitleBarTextColor());
    painter.setLayoutDirection(platform::textDirection(text_));
    const Qt::Alignment side = QStyle::visualAlignment(layoutDirection(), Qt::AlignLeading);
    painter.drawText(rect(), static_cast<int>(side | Qt::AlignAbsolute | Qt::AlignVCenter),
                     lines().join(QLatin1Char('\n')));
}
